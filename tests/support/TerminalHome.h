#pragma once

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "Commands.h"
#include "TemporaryFolder.h"

namespace ovka::testing {

/// The program in a home of its own, its outputs in files.
struct Home {
  TemporaryFolder folder;
  Home() { setenv("OVKA_HOME", folder.at("home").c_str(), 1); }
  ~Home() { unsetenv("OVKA_HOME"); }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

  std::string out;  ///< of the last run
  std::string err;

  int run(const std::vector<std::string>& words) {
    int code = 0;
    {
      const Redirected first(1, folder.at("out"));
      const Redirected second(2, folder.at("err"));
      code = terminal::runProgram(words);
    }
    out = contentsOf(folder.at("out"));
    err = contentsOf(folder.at("err"));
    return code;
  }
  [[nodiscard]] std::string at(const std::string& name) const { return folder.at(name); }

 private:
  class Redirected {
   public:
    Redirected(int descriptor, const std::string& path)
        : descriptor_(descriptor), before_(dup(descriptor)) {
      std::fflush(nullptr);
      const int file = open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
      dup2(file, descriptor);
      close(file);
    }
    ~Redirected() {
      std::fflush(nullptr);
      dup2(before_, descriptor_);
      close(before_);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

   private:
    int descriptor_;
    int before_;
  };
};

inline void write(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

inline bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace ovka::testing
