#include "JournalPart.h"

#include <array>
#include <cerrno>

namespace ovka {

std::string folderOfPath(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::unique_ptr<JournalPart> JournalPart::create(Files& files, FileLocks& locks,
                                                 const std::string& path, int* error) {
  std::unique_ptr<JournalPart> part(new JournalPart(files, path));
  part->file_ = files.write(path, WriteMode::NewOnly, error);
  if (part->file_ == nullptr) return nullptr;
  int lockError = 0;
  part->lock_ = locks.lock(path, &lockError);
  part->syncer_ = files.write(path, WriteMode::Append, error);
  if (part->syncer_ != nullptr) *error = part->append(journalformat::kMagic);
  if (*error == 0) return part;
  part.reset();
  static_cast<void>(files.remove(path));
  return nullptr;
}

int JournalPart::append(journalformat::View bytes) {
  const int error = file_->write(std::as_bytes(bytes));
  if (error == 0) bytes_ = bytes_ + bytes.size();
  return error;
}

int JournalPart::sync() {
  const std::uint64_t written = bytes_;
  if (const int error = syncer_->sync()) return error;
  syncedBytes_ = written;
  if (nameSynced_) return 0;
  if (const int error = files_.syncFolder(folderOfPath(path_))) return error;
  nameSynced_ = true;
  return 0;
}

int JournalPart::check() {
  const std::uint64_t written = bytes_;
  int error = 0;
  const std::unique_ptr<FileReader> there = files_.read(path_, &error);
  // Any other failure tells nothing of the file.
  if (there == nullptr) return error == ENOENT || error == ENOTDIR ? error : 0;
  // Another file took the name, or this one was cut.
  return there->size() < written ? ESTALE : 0;
}

}  // namespace ovka
