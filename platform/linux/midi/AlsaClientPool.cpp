#include "AlsaClientPool.h"

// The library asks for its own client's pool alone; the kernel answers for any. Its header and the
// library's name the same structures, so they do not meet in one file.
#include <algorithm>
#include <sound/asequencer.h>
#include <sys/ioctl.h>

namespace ovka {

std::optional<AlsaClientPool> alsaClientPool(int sequencer, int client) {
  snd_seq_client_pool pool{};
  pool.client = client;
  if (::ioctl(sequencer, SNDRV_SEQ_IOCTL_GET_CLIENT_POOL, &pool) < 0) return std::nullopt;
  return AlsaClientPool{static_cast<std::size_t>(std::max(pool.input_pool, 0)),
                        static_cast<std::size_t>(std::max(pool.input_free, 0))};
}

}  // namespace ovka
