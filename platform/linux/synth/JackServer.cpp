#include "JackServer.h"

#ifdef OVKA_SYNTH_JACK
#include <jack/jack.h>
#endif

namespace ovka {

std::optional<double> jackSampleRate() {
#ifdef OVKA_SYNTH_JACK
  jack_status_t status{};
  jack_client_t* const client = jack_client_open("OVKA probe", JackNoStartServer, &status);
  if (client == nullptr) return {};
  const double rate = jack_get_sample_rate(client);
  jack_client_close(client);
  return rate;
#else
  return {};
#endif
}

}  // namespace ovka
