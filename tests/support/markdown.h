// Reads the fenced blocks of a document, so that tests can check and run what it shows.
#ifndef KORVEX2_TESTS_MARKDOWN_H
#define KORVEX2_TESTS_MARKDOWN_H

#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

#include <vector>

/// A fenced block. A comment on the line before its fence, as in `<!-- file: main.cpp -->`, tells tests what it is.
struct MarkdownBlock {
  QByteArray mark;      ///< "file: main.cpp"; empty without a comment
  QByteArray language;  ///< behind the opening fence
  QByteArray text;      ///< every line with its end
};

inline QByteArray wholeFile(const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
  return file.readAll();
}

inline std::vector<MarkdownBlock> markdownBlocks(const QString& path) {
  std::vector<MarkdownBlock> blocks;
  QByteArray before;
  bool inside = false;
  for (const QByteArray& line : wholeFile(path).split('\n')) {
    if (line.startsWith("```")) {
      if (!inside) {
        const bool marked = before.startsWith("<!-- ") && before.endsWith(" -->");
        blocks.push_back({marked ? before.mid(5, before.size() - 9) : QByteArray(), line.mid(3), QByteArray()});
      }
      inside = !inside;
    } else if (inside) {
      blocks.back().text += line + '\n';
    }
    before = line;
  }
  EXPECT_FALSE(inside) << "a block has no end in " << path.toStdString();
  return blocks;
}

/// What the blocks marked "file: NAME" make when they are put together in their order, with a blank line between.
inline QByteArray fileFromBlocks(const std::vector<MarkdownBlock>& blocks, const QByteArray& name) {
  QByteArray text;
  for (const MarkdownBlock& block : blocks) {
    if (block.mark == "file: " + name) {
      text += (text.isEmpty() ? "" : "\n") + block.text;
    }
  }
  return text;
}

/// Without blank lines: where a document breaks a file into pieces, the pieces' outer blank lines are the document's.
inline QByteArray withoutBlankLines(const QByteArray& text) {
  QByteArray kept;
  for (const QByteArray& line : text.split('\n')) {
    if (!line.trimmed().isEmpty()) {
      kept += line + '\n';
    }
  }
  return kept;
}

#endif
