#include "Program.h"

int main(int argc, char** argv) {
  return ovka::desktop::runProgram(argc, argv);
}
