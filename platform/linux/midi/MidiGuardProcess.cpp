#include "MidiGuardProcess.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <new>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ovka {
namespace {

constexpr char kOrderlyEnd = 'e';

bool hasThreads() {
#ifdef __SANITIZE_THREAD__
  constexpr int kOwn = 2;  // the sanitizer has one of its own
#else
  constexpr int kOwn = 1;
#endif
  std::error_code failed;
  const std::filesystem::directory_iterator tasks("/proc/self/task", failed);
  return !failed && std::distance(begin(tasks), end(tasks)) > kOwn;
}

/// The guard must survive what ends the program: everything but SIGKILL, and signals to the
/// terminal's processes above all.
void leaveTheProgram() {
  ::setsid();
  ::prctl(PR_SET_NAME, "ovka-midi-guard");
  // The program may have blocked or caught signals; its handlers are not for the guard.
  for (int signal = 1; signal < NSIG; ++signal) ::signal(signal, SIG_DFL);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGTTIN, SIGTTOU, SIGPIPE,
                           SIGUSR1, SIGUSR2, SIGALRM}) {
    ::signal(signal, SIG_IGN);
  }
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  if (::chdir("/") != 0) return;  // it would only keep a file system busy
}

/// Keeps `kept` alone, and gives the standard ones nowhere to go: whoever reads what the program
/// writes must see the end of it when the program ends.
int keepOnly(int kept) {
  const int nowhere = ::open("/dev/null", O_RDWR);
  // Above the standard three, wherever it was.
  const int moved = ::fcntl(kept, F_DUPFD_CLOEXEC, 3);
  for (const int standard : {0, 1, 2}) ::dup2(nowhere, standard);
  const int low = ::dup2(moved, 3);
  ::close_range(4, ~0U, 0);
  return low;
}

/// A descriptor that becomes readable when the process ends; -1 where the kernel has none.
int descriptorOf(pid_t process) {
  return static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
}

/// Waits for the program's end; true when it was an orderly one.
bool waitForEnd(int alive, pid_t program) {
  std::array<pollfd, 2> ends{{{alive, POLLIN, 0}, {descriptorOf(program), POLLIN, 0}}};
  if (::getppid() != program) ends[1].revents = POLLIN;  // it died while we were born
  for (;;) {
    if (ends[0].revents != 0 || ends[1].revents != 0) {
      // What it said last counts, also when its end was noticed first.
      char word = 0;
      ::fcntl(alive, F_SETFL, O_NONBLOCK);
      return ::read(alive, &word, 1) == 1 && word == kOrderlyEnd;
    }
    if (::poll(ends.data(), ends.size(), -1) < 0) ends[0].revents = ends[1].revents = 0;
  }
}

[[noreturn]] void guard(int alive, pid_t program, const void* memory) {
  leaveTheProgram();
  const int kept = keepOnly(alive);
  if (!waitForEnd(kept, program)) {
    if (const SoundingNotes* notes = SoundingNotes::at(memory)) endSoundingNotes(*notes);
  }
  ::_exit(0);
}

/// Waits for the guard's end; one that somebody stopped must not keep the program from its own.
void reap(pid_t guard) {
  constexpr int kTries = 2000;
  for (int i = 0; i < kTries; ++i) {
    const pid_t ended = ::waitpid(guard, nullptr, WNOHANG);
    if (ended == guard || (ended < 0 && errno != EINTR)) return;
    ::usleep(1000);
  }
  ::kill(guard, SIGKILL);
  while (::waitpid(guard, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace

SoundingNotes& MidiGuardProcess::notes() {
  if (memory_ == nullptr) {
    void* shared = ::mmap(nullptr, sizeof(SoundingNotes), PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) throw std::bad_alloc();
    memory_ = shared;
    SoundingNotes::make(memory_);
  }
  return *static_cast<SoundingNotes*>(memory_);
}

int MidiGuardProcess::start() {
  if (process_ >= 0) return 0;
  static_cast<void>(notes());
  if (hasThreads()) return EBUSY;
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return errno;
  const pid_t program = ::getpid();
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(ends[1]);
    guard(ends[0], program, memory_);
  }
  const int error = child < 0 ? errno : 0;
  ::close(ends[0]);
  if (error != 0) {
    ::close(ends[1]);
    return error;
  }
  process_ = child;
  owner_ = program;
  alive_ = ends[1];
  return 0;
}

void MidiGuardProcess::finish() {
  // A copy of this process, forked and not yet something else, has no say.
  if (process_ >= 0 && owner_ != ::getpid()) return;
  if (process_ >= 0) {
    // The guard may be dead, and nobody reads then.
    struct sigaction ignored {};
    struct sigaction before {};
    ignored.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignored, &before);
    static_cast<void>(!::write(alive_, &kOrderlyEnd, 1));
    ::sigaction(SIGPIPE, &before, nullptr);
    ::close(alive_);
    reap(process_);
    process_ = -1;
    alive_ = -1;
  }
  if (memory_ != nullptr) ::munmap(memory_, sizeof(SoundingNotes));
  memory_ = nullptr;
}

}  // namespace ovka
