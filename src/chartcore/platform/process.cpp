#include "chartcore/platform/process.h"

#if !defined(_WIN32)

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

extern char** environ;

namespace chartcore {
namespace {

bool IsExecutableFile(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && access(path.c_str(), X_OK) == 0;
}

// argv in the form exec wants, built before any fork: after it only
// async-signal-safe calls are allowed.
class ArgumentVector {
 public:
  explicit ArgumentVector(const std::vector<std::string>& words) : m_words(words) {
    for (std::string& w : m_words) m_pointers.push_back(&w[0]);
    m_pointers.push_back(nullptr);
  }
  ArgumentVector(const ArgumentVector&) = delete;
  ArgumentVector& operator=(const ArgumentVector&) = delete;
  char* const* get() { return m_pointers.data(); }

 private:
  std::vector<std::string> m_words;
  std::vector<char*> m_pointers;
};

// What the started program must not inherit from the host: blocked or
// ignored signals, the host's terminal session, its standard input and
// output, and its open descriptors. Runs in the forked child, so
// async-signal-safe calls only. statusFd (the exec report pipe) is moved
// above 2 first when the host had closed its standard descriptors, so
// /dev/null does not replace it.
void PrepareDetachedChild(const sigset_t& emptyMask, int& statusFd) {
  setsid();
  struct sigaction defaultAction;
  std::memset(&defaultAction, 0, sizeof defaultAction);
  defaultAction.sa_handler = SIG_DFL;
  for (int sig = 1; sig < NSIG; ++sig) sigaction(sig, &defaultAction, nullptr);
  sigprocmask(SIG_SETMASK, &emptyMask, nullptr);
  if (statusFd <= 2) {
    const int moved = fcntl(statusFd, F_DUPFD_CLOEXEC, 3);
    if (moved >= 0) statusFd = moved;
  }
  const int devNull = open("/dev/null", O_RDWR);
  if (devNull >= 0) {
    for (int fd = 0; fd <= 2; ++fd)
      if (devNull != fd) dup2(devNull, fd);
    if (devNull > 2) close(devNull);
  }
#if defined(SYS_close_range)
  // Marks every other descriptor close-on-exec (kernels without it leave
  // them as they are; the host's own are normally close-on-exec already).
  syscall(SYS_close_range, 3u, ~0u, 4u /* CLOSE_RANGE_CLOEXEC */);
#endif
}

bool WriteAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    const ssize_t n = write(fd, data, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

}  // namespace

// The full path of a program found on PATH, or empty. Empty PATH entries
// (the current directory) are not searched.
std::string FindProgramOnPath(const std::string& name) {
  if (name.empty()) return std::string();
  if (name.find('/') != std::string::npos) return IsExecutableFile(name) ? name : std::string();
  const char* pathVariable = std::getenv("PATH");
  const std::string searchPath = pathVariable != nullptr ? pathVariable : "/usr/local/bin:/usr/bin:/bin";
  size_t start = 0;
  while (start <= searchPath.size()) {
    size_t end = searchPath.find(':', start);
    if (end == std::string::npos) end = searchPath.size();
    if (end > start) {
      std::string candidate = searchPath.substr(start, end - start);
      if (candidate.back() != '/') candidate += '/';
      candidate += name;
      if (IsExecutableFile(candidate)) return candidate;
    }
    start = end + 1;
  }
  return std::string();
}

// Starts program with its arguments and returns at once, true when the
// program was executed. A double fork: the intermediate child exits right
// after forking the program and is reaped here by its own pid, so the program
// is adopted by init and never becomes our zombie, and no other child of the
// host is waited for. Whether exec succeeded comes back through a
// close-on-exec pipe: end of file means it did, an errno means it did not.
bool StartDetachedProgram(const std::string& program, const std::vector<std::string>& arguments) {
  if (program.empty()) return false;
  std::vector<std::string> words;
  words.push_back(program);
  words.insert(words.end(), arguments.begin(), arguments.end());
  ArgumentVector argv(words);
  const std::string file = program;
  sigset_t emptyMask;
  sigemptyset(&emptyMask);

  int status[2];
  if (pipe2(status, O_CLOEXEC) != 0) return false;
  const pid_t intermediate = fork();
  if (intermediate < 0) {
    close(status[0]);
    close(status[1]);
    return false;
  }
  if (intermediate == 0) {
    close(status[0]);
    const pid_t viewer = fork();
    if (viewer < 0) {
      const int error = errno;
      WriteAll(status[1], reinterpret_cast<const char*>(&error), sizeof error);
      _exit(1);
    }
    if (viewer > 0) _exit(0);
    int statusFd = status[1];
    PrepareDetachedChild(emptyMask, statusFd);
    execve(file.c_str(), argv.get(), environ);
    const int error = errno;
    WriteAll(statusFd, reinterpret_cast<const char*>(&error), sizeof error);
    _exit(127);
  }

  close(status[1]);
  int childStatus = 0;
  pid_t reaped;
  do {
    reaped = waitpid(intermediate, &childStatus, 0);
  } while (reaped < 0 && errno == EINTR);
  int error = 0;
  ssize_t got;
  do {
    got = read(status[0], &error, sizeof error);
  } while (got < 0 && errno == EINTR);
  close(status[0]);
  // A host that reaps every child itself may have taken the intermediate
  // (ECHILD); the pipe alone then tells.
  const bool intermediateOk = reaped != intermediate || (WIFEXITED(childStatus) && WEXITSTATUS(childStatus) == 0);
  return got == 0 && intermediateOk;
}

// Runs a program to read what it prints, waiting at most timeoutMs, and
// keeps at most maxBytes of its standard output.
bool RunProgramAndCapture(const std::string& program, const std::vector<std::string>& arguments,
                          std::string& output, int timeoutMs, size_t maxBytes) {
  output.clear();
  std::vector<std::string> words;
  words.push_back(program);
  words.insert(words.end(), arguments.begin(), arguments.end());
  ArgumentVector argv(words);

  int out[2];
  if (pipe2(out, O_CLOEXEC) != 0) return false;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  // Nothing blocked and every signal at its default, as for a detached
  // program: the host's own handling is not the program's.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  sigfillset(&signals);
  sigdelset(&signals, SIGKILL);
  sigdelset(&signals, SIGSTOP);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, program.c_str(), &actions, &attributes, argv.get(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  if (spawned != 0) {
    close(out[0]);
    return false;
  }

  timespec begin;
  clock_gettime(CLOCK_MONOTONIC, &begin);
  bool finished = false;
  char chunk[4096];
  for (;;) {
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const long long elapsed = (now.tv_sec - begin.tv_sec) * 1000LL + (now.tv_nsec - begin.tv_nsec) / 1000000;
    if (elapsed >= timeoutMs) break;
    pollfd watch{out[0], POLLIN, 0};
    const int ready = poll(&watch, 1, static_cast<int>(timeoutMs - elapsed));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) break;
    const ssize_t n = read(out[0], chunk, sizeof chunk);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      finished = true;
      break;
    }
    if (output.size() < maxBytes) output.append(chunk, std::min(static_cast<size_t>(n), maxBytes - output.size()));
  }
  close(out[0]);
  if (!finished) kill(pid, SIGKILL);
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return finished;
}

}  // namespace chartcore

#endif  // !_WIN32
