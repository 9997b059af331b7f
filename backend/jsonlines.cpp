// Walks a JSON text and notes the line of each value.
#include "jsonlines.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace korvex2 {

namespace {

// Nothing that anyone looks up lies deeper or has a longer key; without an end the paths of a hostile text could fill
// the memory.
constexpr std::size_t deepest = 4;
constexpr int longestKey = 64;

// An object or array that is open; its path with a trailing slash, the number of its current element.
struct Level {
  bool isObject;
  QString path;
  int element;
};

class Walker {
 public:
  explicit Walker(const QByteArray& text) : text_(text) {}

  // No recursion: the depth of a text is its author's choice.
  QHash<QString, int> walk() {
    while (position_ < text_.size()) {
      const char c = text_[position_];
      if (c == '\n') {
        ++line_;
        ++position_;
      } else if (c == '"') {
        takeString();
      } else if (c == '{' || c == '[') {
        const QString path = noteValue();
        levels_.push_back({c == '{', levels_.empty() ? path : path + QLatin1Char('/'), 0});
        ++position_;
      } else if (c == '}' || c == ']') {
        if (!levels_.empty()) {
          levels_.pop_back();
        }
        ++position_;
      } else if (c == ',') {
        if (!levels_.empty()) {
          ++levels_.back().element;
        }
        haveKey_ = false;
        ++position_;
      } else if (c == ':' || c == ' ' || c == '\t' || c == '\r') {
        ++position_;
      } else {
        takeWord();
      }
    }
    return lines_;
  }

 private:
  QString noteValue() {
    haveKey_ = false;
    if (levels_.size() > deepest) {
      return QString();
    }
    QString path;
    if (!levels_.empty()) {
      const Level& level = levels_.back();
      path = level.path + (level.isObject ? key_ : QString::number(level.element));
    }
    if (!path.isEmpty() || levels_.empty()) {  // a member of the whole may have an empty name
      lines_.insert(path, line_);
    }
    return path;
  }

  void takeString() {
    const int start = ++position_;
    while (position_ < text_.size() && text_[position_] != '"') {
      position_ += text_[position_] == '\\' ? 2 : 1;
    }
    position_ = std::min(position_, text_.size());
    if (!levels_.empty() && levels_.back().isObject && !haveKey_) {
      haveKey_ = true;
      key_ = QString::fromUtf8(text_.constData() + start, std::min(position_ - start, longestKey));
    } else {
      noteValue();
    }
    ++position_;
  }

  // A number, true, false or null.
  void takeWord() {
    noteValue();
    static const QByteArray ends("{}[],:\"\n \t\r");
    while (position_ < text_.size() && !ends.contains(text_[position_])) {
      ++position_;
    }
  }

  const QByteArray& text_;
  int position_ = 0;
  int line_ = 1;
  QString key_;  // of the value that comes next
  bool haveKey_ = false;
  std::vector<Level> levels_;
  QHash<QString, int> lines_;
};

}  // namespace

QHash<QString, int> jsonLines(const QByteArray& text) { return Walker(text).walk(); }

int lineOfOffset(const QByteArray& text, int offset) {
  const int last = std::max(0, std::min(offset, text.size()));
  return 1 + static_cast<int>(std::count(text.constData(), text.constData() + last, '\n'));
}

}  // namespace korvex2
