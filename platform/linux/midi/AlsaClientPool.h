#pragma once

#include <cstddef>
#include <optional>

namespace ovka {

/// Events that may wait for a client, and how many more it takes. A client that gets more loses all
/// that wait, and its sender hears nothing of it.
struct AlsaClientPool {
  std::size_t most = 0;  ///< 0: a client of the kernel, which takes events at once
  std::size_t free = 0;
};

/// `sequencer` is an open descriptor of the sequencer. Empty when the client is not there.
std::optional<AlsaClientPool> alsaClientPool(int sequencer, int client);

}  // namespace ovka
