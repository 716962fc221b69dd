#pragma once

#include "AddressSpace.h"
#include "AmplifierPorts.h"
#include "SampleStore.h"
#include "StreamDecoder.h"

namespace ovka {

/// The system's name for the sample buffer, the decoder and the ports together. It only gathers
/// them, in the order in which each builds on the one before; other rooms take the component they
/// need.
class QZSerialPort final : public SampleStore, public StreamDecoder, public AmplifierPorts {
 public:
  /// +sharedQZSerialPort: the one of this process. Defined by the engine alone; rooms below it take
  /// the components they need.
  static QZSerialPort& sharedQZSerialPort();

  QZSerialPort(AddressSpace& space, const AmplifierServices& services)
      : SampleStore(space, services.recording, services.annotations),
        StreamDecoder(static_cast<SampleStore&>(*this), services.notifications, services.losses,
                      services.application),
        AmplifierPorts(services, static_cast<StreamDecoder&>(*this)) {}
};

}  // namespace ovka
