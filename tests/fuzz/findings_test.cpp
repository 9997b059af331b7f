// Runs a fuzz target on its seed corpus, on every finding saved, and on some thousand mutations that never change.
#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>

#include <random>
#include <string>
#include <vector>

#include "fuzztarget.h"

namespace {

struct Input {
  std::string name;
  std::string bytes;
};

/// Every file of `kind` ("corpus" or "findings") of this program's target, by name.
std::vector<Input> inputs(const char* kind) {
  const QDir folder(QStringLiteral(KORVEX2_FUZZ_FOLDER "/%1/" KORVEX2_FUZZ_TARGET).arg(QLatin1String(kind)));
  std::vector<Input> all;
  for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) {
    QFile file(folder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(file.fileName());
    all.push_back({name.toStdString(), file.readAll().toStdString()});
  }
  return all;
}

int fuzz(const std::string& bytes) {
  // A block of exactly this size, so that the address sanitizer sees the end of it.
  const std::vector<std::uint8_t> block(bytes.begin(), bytes.end());
  return fuzzOne(block.data(), block.size());
}

void expectSound(const std::vector<Input>& all) {
  for (const Input& input : all) {
    EXPECT_EQ(fuzz(input.bytes), 0) << input.name << ": " << lastFuzzProblem();
  }
}

/// Damages inputs, the same way in every run.
class Mutator {
 public:
  explicit Mutator(const std::vector<Input>& seeds) : seeds_(seeds) {}

  std::string next() {
    std::string bytes = seed();
    for (std::size_t n = 1 + below(4); n > 0; --n) {
      mutate(bytes);
    }
    return bytes;
  }

 private:
  std::size_t below(std::size_t end) { return random_() % end; }
  const std::string& seed() { return seeds_[below(seeds_.size())].bytes; }

  void mutate(std::string& bytes) {
    static const std::string telling = "0123456789+-.eExX[] \n\r\t#\"',nbma|=~%\\";
    const std::size_t at = below(bytes.size() + 1);
    const std::string& other = seed();
    const std::size_t from = below(other.size() + 1);
    switch (below(7)) {
      case 0:
        bytes.insert(at, 1, telling[below(telling.size())]);
        break;
      case 1:
        bytes.insert(at, 1, static_cast<char>(below(256)));
        break;
      case 2:
        bytes.erase(at, 1 + below(12));
        break;
      case 3:
        bytes.resize(at);
        break;
      case 4:  // a piece of another input
        bytes.insert(at, other, from, 1 + below(60));
        break;
      case 5:  // another input from here on
        bytes.replace(at, std::string::npos, other, from, std::string::npos);
        break;
      default:
        if (at < bytes.size()) {
          bytes[at] = telling[below(telling.size())];
        }
    }
  }

  const std::vector<Input>& seeds_;
  std::mt19937 random_{20240917};
};

TEST(FuzzTarget, IsContentWithTheSeedCorpus) {
  const std::vector<Input> seeds = inputs("corpus");
  ASSERT_GE(seeds.size(), 5U);
  expectSound(seeds);
}

TEST(FuzzTarget, IsContentWithEveryFindingSaved) { expectSound(inputs("findings")); }

TEST(FuzzTarget, IsContentWithNothingAtAll) { EXPECT_EQ(fuzzOne(nullptr, 0), 0) << lastFuzzProblem(); }

TEST(FuzzTarget, IsContentWithThousandsOfMutationsOfTheCorpus) {
  const std::vector<Input> seeds = inputs("corpus");
  ASSERT_FALSE(seeds.empty());
  Mutator mutator(seeds);
  for (int round = 0; round < 2000; ++round) {
    const std::string bytes = mutator.next();
    ASSERT_EQ(fuzz(bytes), 0) << "round " << round << ": " << lastFuzzProblem() << "\n"
                              << testing::PrintToString(bytes);
  }
}

}  // namespace
