#include <string>
#include <vector>

#include "Commands.h"

int main(int count, char** words) {
  const std::vector<std::string> line(words + (count > 0 ? 1 : 0), words + count);
  return ovka::terminal::runProgram(line);
}
