// Owner of a file descriptor.
#ifndef KORVEX2_BACKEND_FILEDESCRIPTOR_H
#define KORVEX2_BACKEND_FILEDESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace korvex2 {

/// Closes its descriptor at the end. -1: has none.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (descriptor_ >= 0) {
      ::close(descriptor_);
    }
  }

  explicit operator bool() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

 private:
  int descriptor_ = -1;
};

}  // namespace korvex2

#endif
