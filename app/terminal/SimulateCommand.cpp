#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "Commands.h"
#include "Failure.h"
#include "LinuxClock.h"
#include "Output.h"
#include "PseudoTerminal.h"
#include "SimulatorArguments.h"
#include "SimulatorConsole.h"
#include "SimulatorServer.h"
#include "StopSignals.h"

namespace ovka::terminal {

void runSimulate(const Arguments& arguments) {
  using std::chrono::nanoseconds;
  const SimulatorOptions options = simulatorOptionsOf(arguments);
  std::string problem;
  std::unique_ptr<Signal> signal = makeSignal(options, problem);
  if (signal == nullptr) throw Failure(ExitCode::BadInput, problem);

  StopSignals stop;
  PseudoTerminal line;
  problem = line.open(options.link);
  if (!problem.empty()) throw Failure(ExitCode::Port, problem);
  VirtualAmplifier amplifier(options, std::move(signal));
  SimulatorServer server(amplifier, line, options.faults);
  if (arguments.given("verbose"))
    server.onEvent([](const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); });

  Output output;
  output.write(line.path() + "\n");
  output.flush();
  if (options.oldBluetooth) {
    std::fprintf(stderr, "the old Bluetooth head set; read it with: --set oldBluetooth=1\n");
  } else {
    std::fprintf(stderr, "read it with: ovka live --port %s --model %u --config %u\n",
                 line.path().c_str(), options.model, options.config);
  }

  const LinuxClock clock;
  const std::int64_t start = clock.nanoseconds();
  const auto length = static_cast<std::int64_t>(arguments.number("seconds").value_or(1e9) * 1e9);
  SimulatorConsole console(amplifier, server);
  while (!stop.stopped() && clock.nanoseconds() - start < length) {
    console.poll(clock.nanoseconds());
    stop.wait(server.serveOnce(clock.nanoseconds()));
  }
}

}  // namespace ovka::terminal
