#pragma once

#include <cstdint>

#include "NotificationCenter.h"
#include "Shell.h"

namespace ovka {

/// The application controller: answers what the lower rooms ask of the application. Called on the
/// acquisition threads; nothing here blocks or allocates.
class QZAppController final : public ApplicationControl, public RecordingControl, public PortView {
 public:
  explicit QZAppController(NotificationCenter& center) : center_(center) {}

  /// Posts "needupdateNotification": the faces redraw and publish.
  void needupdateNotification() override;
  [[nodiscard]] std::int32_t setDistributeTiming() override;
  /// Posts "needupdateSerialOutNotification".
  void needupdateSerialOutNotification() override;
  [[nodiscard]] std::int32_t getSerialOutputTiming() override;
  /// Posts "doSomethingSlow".
  void doSomethingSlow(std::int32_t argument) override;
  [[nodiscard]] std::int32_t getSetStartAutoSaveProcess() override;
  void SetStartAutoSaveProcess(std::int32_t pending) override;
  [[nodiscard]] std::int32_t getSetStartAutoSaveMovie() override;
  void SetStartAutoSaveMovie(std::int32_t pending) override;

  /// Posts "PauseMovie".
  void PauseMovie() override;
  /// A recording ends: the devices go on being acquired (`setRecModeX` 2), nothing more is
  /// recorded.
  void StopRecord2VideoandBrainwave() override;
  /// A recording begins (`setRecModeX` 1).
  void StartRecord2VideoandBrainwave() override;
  /// Posts "AutoSaveWhenRecEnd".
  void AutoSaveWhenRecEnd() override;

  /// setoffSerialX: clears `PortONActionX`.
  void setoffSerialX(std::int32_t off) override;

 private:
  NotificationCenter& center_;
};

/// Values of `setRecModeX`.
inline constexpr std::int32_t kPlayback = 0;
inline constexpr std::int32_t kRecording = 1;
inline constexpr std::int32_t kAcquiring = 2;

}  // namespace ovka
