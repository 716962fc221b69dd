#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Canvas.h"
#include "LiveSnapshot.h"

namespace ovka::terminal {

/// Lays one snapshot out on one canvas; made new for every picture.
class LivePicture {
 public:
  LivePicture(const LiveSnapshot& snapshot, const Look& look, Canvas canvas);

  bool shares = false;  ///< shares of the total in percent instead of values
  bool help = false;    ///< the keys instead of the picture
  double scale = 1;     ///< what a full bar stands for

  [[nodiscard]] Canvas draw();

 private:
  /// One line of the picture; of too many lines those of the highest rank are left out first.
  struct Line {
    int rank;
    std::function<void(int row)> draw;
  };

  void collectLines();
  void collectNotices();
  void drawHelp(int first);
  void title(int row);
  void device(int row);
  void headings(int row);
  void band(std::size_t index, int row);
  void total(int row);
  void scaleLine(int row);
  void peak(std::size_t index, int row);
  void music(int row);
  void losses(int row);
  void keys(int row);
  void fitLines(std::size_t room);

  const LiveSnapshot& snapshot_;
  const Look& look_;
  Canvas canvas_;
  std::vector<std::size_t> shown_;  ///< the channels that have room
  std::size_t hidden_ = 0;          ///< active channels that have none
  int labelWidth_ = 0;
  int columnWidth_ = 0;
  bool wideLabels_ = false;
  std::vector<Line> lines_;
};

}  // namespace ovka::terminal
