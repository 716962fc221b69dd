#pragma once

#include <span>
#include <string>
#include <vector>

#include "Options.h"

namespace ovka::terminal {

/// Every command of the program, in the order in which help lists them.
[[nodiscard]] const std::vector<CommandForm>& commandForms();

/// Runs the program on the words behind its own name and returns its exit code (see ExitCode).
/// Errors go to standard error as one line, "ovka: ...".
[[nodiscard]] int runProgram(std::span<const std::string> words);

// One function a command. Each ends by returning or by throwing Failure; main thread.
void runLive(const Arguments& arguments);
void runSimulate(const Arguments& arguments);
void runPorts(const Arguments& arguments);
void runCapture(const Arguments& arguments);
void runReplay(const Arguments& arguments);
void runDecode(const Arguments& arguments);
void runAnalyse(const Arguments& arguments);
void runRecord(const Arguments& arguments);
void runInfo(const Arguments& arguments);
void runConvert(const Arguments& arguments);
void runPlay(const Arguments& arguments);
void runRender(const Arguments& arguments);
void runPreset(const Arguments& arguments);
void runRecover(const Arguments& arguments);
void runMidi(const Arguments& arguments);
void runDoctor(const Arguments& arguments);
void runSettings(const Arguments& arguments);
void runActions(const Arguments& arguments);
void runBench(const Arguments& arguments);

}  // namespace ovka::terminal
