#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <random>

#include "base/error.h"
#include "base/files.h"
#include "base/held_signals_posix.h"
#include "base/interrupt.h"
#include "base/process_posix.h"

namespace zv {
namespace {

namespace fs = std::filesystem;

using Status = struct stat;

constexpr std::size_t CHUNK = 1 << 20;  // between two looks at what else has happened
constexpr int ATTEMPTS = 100;           // at a name that is not taken yet

// What is to be written, and under which name.
struct Job {
  const fs::path& path;
  std::string_view data;

  [[noreturn]] void fail(int problem = errno) const {
    throw Error(os_error_text(problem, path.string()));
  }
};

template <class Check>
void write_all(int file, std::string_view data, const Job& job, Check check) {
  while (!data.empty()) {
    check();
    const ssize_t count = ::write(file, data.data(), std::min(data.size(), CHUNK));
    pollfd room{file, POLLOUT, 0};
    if (count >= 0)
      data.remove_prefix(static_cast<std::size_t>(count));
    else if (errno == EAGAIN)
      poll(&room, 1, -1);
    else if (errno != EINTR)
      job.fail();
  }
}

// A new file beside the one that it shall replace; it is gone again unless it was moved there.
class Beside {
 public:
  explicit Beside(const fs::path& target) : target_(target), file_(create()) {}
  ~Beside() {
    if (exists() && !moved_) unlink(name_.c_str());
  }
  Beside(const Beside&) = delete;
  Beside& operator=(const Beside&) = delete;

  bool exists() const { return !name_.empty(); }
  // Why it does not exist.
  int problem() const { return problem_; }

  bool take_over(const Status& old) {
    Status own{};
    if (fstat(file_.number(), &own) != 0) return false;
    const bool same_owner = own.st_uid == old.st_uid && own.st_gid == old.st_gid;
    // In this order: with a new owner a file loses some of its mode.
    return (same_owner || fchown(file_.number(), old.st_uid, old.st_gid) == 0) &&
           fchmod(file_.number(), old.st_mode & 07777) == 0;
  }

  void fill(const Job& job, const HeldSignals& signals) {
    write_all(file_.number(), job.data, job, [&] { signals.check(); });
    if (fsync(file_.number()) != 0 || !file_.close()) job.fail();
  }

  bool move() { return moved_ = std::rename(name_.c_str(), target_.c_str()) == 0; }

 private:
  Descriptor create() {
    std::random_device random;
    for (int i = 0; i < ATTEMPTS; ++i) {
      // Kept before there is such a file: memory that runs out in between would leave it behind.
      name_ = target_.parent_path() / ("." + std::to_string(random()) + ".tmp");
      const int file = open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      problem_ = file < 0 ? errno : 0;
      if (file < 0) name_.clear();
      if (problem_ != EEXIST) return Descriptor(file);
    }
    return Descriptor(-1);
  }

  fs::path target_;
  fs::path name_;  // empty when it could not be made
  int problem_ = 0;
  bool moved_ = false;
  Descriptor file_;
};

// The name behind all links, whether or not something has it.
fs::path followed(fs::path path) {
  std::error_code error;
  for (fs::path to = fs::read_symlink(path, error); !error; to = fs::read_symlink(path, error)) {
    path = path.parent_path() / to;
  }
  return path;
}

bool same_file(const Status& one, const Status& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Some systems let a file be changed, but not replaced.
bool denied(int problem) {
  return problem == EACCES || problem == EPERM || problem == EROFS || problem == EBUSY;
}

void create(const Job& job) {
  const HeldSignals signals;
  const fs::path target = followed(job.path);
  if (!target.has_filename()) job.fail(EISDIR);
  Beside fresh(target);
  if (!fresh.exists()) job.fail(fresh.problem());
  fresh.fill(job, signals);
  if (!fresh.move()) job.fail();
}

// False when the file has to be written in place.
bool replace(const Job& job, const Status& old) {
  const HeldSignals signals;
  const fs::path target = followed(job.path);
  Status found{};
  if (stat(target.c_str(), &found) != 0 || !same_file(found, old)) return false;
  Beside fresh(target);
  if (!fresh.exists() && !denied(fresh.problem())) job.fail(fresh.problem());
  if (!fresh.exists() || !fresh.take_over(old)) return false;
  fresh.fill(job, signals);
  if (fresh.move()) return true;
  if (!denied(errno)) job.fail();
  return false;
}

// What the file grows by comes first: when there is no room for it, all is as it was.
void overwrite(int file, const Job& job, const Status& old) {
  const HeldSignals signals;
  const auto before = static_cast<std::size_t>(old.st_size);
  const std::size_t shared = std::min(before, job.data.size());
  try {
    lseek(file, static_cast<off_t>(shared), SEEK_SET);
    write_all(file, job.data.substr(shared), job, [] {});
    if (fsync(file) != 0) job.fail();
  } catch (const Error&) {
    if (ftruncate(file, old.st_size) == 0) lseek(file, 0, SEEK_SET);
    throw;
  }
  lseek(file, 0, SEEK_SET);
  write_all(file, job.data.substr(0, shared), job, [] {});
  if (ftruncate(file, static_cast<off_t>(job.data.size())) != 0 || fsync(file) != 0) job.fail();
}

// Our own output under another name, where a file of its own would cut off what follows.
int own_stream(const Status& target) {
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
    Status status{};
    const bool known = fstat(stream, &status) == 0 && !S_ISDIR(status.st_mode);
    if (known && !S_ISCHR(status.st_mode) && same_file(status, target)) return stream;
  }
  return -1;
}

// A pipe is open only when its other end is, and Ctrl+C ends the wait for that.
Descriptor open_existing(const Job& job) {
  while (true) {
    const int file = open(job.path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    if (file >= 0 || errno == ENOENT) return Descriptor(file);
    if (errno != EINTR) job.fail();
    check_interrupt();
  }
}

}  // namespace

void write_file(const fs::path& path, std::string_view data) {
  const Job job{path, data};
  Status old{};
  if (stat(path.c_str(), &old) == 0 && own_stream(old) >= 0) {
    return write_all(own_stream(old), data, job, check_interrupt);
  }
  Descriptor file = open_existing(job);
  if (file.number() < 0) return create(job);
  if (fstat(file.number(), &old) != 0) job.fail();
  if (!S_ISREG(old.st_mode)) {
    write_all(file.number(), data, job, check_interrupt);
    if (!file.close()) job.fail();
  } else if (old.st_nlink > 1 || !replace(job, old)) {
    overwrite(file.number(), job, old);
  }
}

FolderLock::FolderLock(const std::string& folder)
    : handle_(open(folder.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (handle_ == NONE) return;
  ours_ = flock(static_cast<int>(handle_), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

FolderLock::~FolderLock() {
  if (handle_ != NONE) close(static_cast<int>(handle_));
}

}  // namespace zv
