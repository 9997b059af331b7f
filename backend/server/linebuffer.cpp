// See linebuffer.h.
#include "linebuffer.h"

#include <algorithm>

namespace korvex2 {

void LineBuffer::append(const char* bytes, std::size_t size) {
  if (begin_ == bytes_.size() || bytes_.size() + size > capacity) {  // moves bytes seldom, and keeps the bound
    bytes_.erase(0, begin_);
    scanned_ -= begin_;
    begin_ = 0;
  }
  bytes_.append(bytes, size);
}

void LineBuffer::findEnd() {
  if (!complete_) {
    const auto from = bytes_.begin() + static_cast<std::ptrdiff_t>(scanned_);
    const auto end = std::find_if(from, bytes_.end(), [](char c) { return c == '\n' || c == '\0'; });
    scanned_ = static_cast<std::size_t>(end - bytes_.begin());
    complete_ = end != bytes_.end();
  }
}

std::size_t LineBuffer::contentEnd() const {
  return scanned_ > begin_ && bytes_[scanned_ - 1] == '\r' ? scanned_ - 1 : scanned_;
}

bool LineBuffer::isTooLong() {
  findEnd();
  return contentEnd() - begin_ > longestLine;
}

bool LineBuffer::hasLine() { return !isTooLong() && complete_; }

std::optional<ReceivedLine> LineBuffer::take() {
  if (!hasLine()) {
    return std::nullopt;
  }
  ReceivedLine line{QByteArray(bytes_.data() + begin_, static_cast<int>(contentEnd() - begin_)), bytes_[scanned_]};
  begin_ = scanned_ + 1;
  scanned_ = begin_;
  complete_ = false;
  return line;
}

}  // namespace korvex2
