#pragma once

namespace ovka::desktop {

/// The desktop program: reads the line, opens the window, runs until it is closed. Without a
/// display it says so, names the terminal view, and returns 1.
int runProgram(int argc, char** argv);

}  // namespace ovka::desktop
