// A second, plain reading of live lines to compare the tracking stream with: slow, obvious, on copies of the text.
#ifndef KORVEX2_TESTS_REFERENCEPARSER_H
#define KORVEX2_TESTS_REFERENCEPARSER_H

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

/// Uses the C library's strtol and strtod as they are, so it must run in the "C" locale.
struct ReferenceParser {
  struct Store {
    int id = -1;
    float quality = -1.0F;
    int buttons = 0;
    float position[3] = {0, 0, 0};
    double rotation[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};  // row, column
  };

  std::string chosenType;
  int chosenIndex = -1;
  bool withHead = false;
  Store bodyStore;
  Store deviceStore;
  int marking = 0;  // of the last line: 1 tracked, -1 not tracked, 0 neither

  int read(const std::string& tag, const std::string& line) {
    marking = 0;
    if (tag == "6d" && chosenType == "standard") {
      return readBodies(line);
    }
    if (tag == "6dw" && chosenType == "wandgrip") {
      return readDevices(line, 4, 1, "ifi", false);
    }
    if (tag == "6dw2" && chosenType == "wandgrip") {
      return readDevices(line, 5, 2, "ifii", true);
    }
    return 0;
  }

 private:
  struct Numbers {
    std::vector<int> integers;
    std::vector<float> reals;
  };

  static bool takeInteger(std::string& text, int& value) {
    const char* begin = text.c_str();
    char* end = nullptr;
    const long number = std::strtol(begin, &end, 0);
    if (end == begin) {
      return false;
    }
    value = static_cast<int>(std::min<long>(INT_MAX, std::max<long>(INT_MIN, number)));
    text = std::string(end);
    return true;
  }

  static bool takeReal(std::string& text, float& value) {
    const char* begin = text.c_str();
    char* end = nullptr;
    const double number = std::strtod(begin, &end);
    if (end == begin) {
      return false;
    }
    value = static_cast<float>(number);
    text = std::string(end);
    return true;
  }

  /// Cuts the next block off the text and reads its numbers.
  static bool takeBlock(std::string& text, const std::string& format, Numbers& numbers) {
    const std::size_t open = text.find('[');
    if (open == std::string::npos) {
      return false;
    }
    const std::size_t close = text.find(']', open);
    if (close == std::string::npos) {
      return false;
    }
    std::string content = text.substr(open + 1, close - open - 1);
    text = text.substr(close + 1);
    for (const char letter : format) {
      int integer = 0;
      float real = 0;
      if (letter == 'i' && takeInteger(content, integer)) {
        numbers.integers.push_back(integer);
      } else if (letter == 'f' && takeReal(content, real)) {
        numbers.reals.push_back(real);
      } else {
        return false;
      }
    }
    return true;
  }

  static void keep(const Numbers& numbers, Store& store) {
    store.id = numbers.integers[0];
    store.quality = numbers.reals[0];
    for (std::size_t i = 0; i < 3; ++i) {
      store.position[i] = numbers.reals[1 + i];
    }
    std::size_t next = 4;
    for (auto column = 0; column < 3; ++column) {
      for (auto row = 0; row < 3; ++row) {
        store.rotation[row][column] = static_cast<double>(numbers.reals[next++]);
      }
    }
  }

  int readBodies(const std::string& line) {
    if (line.size() < 3) {
      return -1;
    }
    std::string rest = line.substr(3);
    int count = 0;
    if (!takeInteger(rest, count)) {
      return -1;
    }
    if (count < 1) {
      marking = -1;
      return 0;
    }
    bool matched = false;
    for (int i = 0; i < count; ++i) {
      Numbers numbers;
      if (!takeBlock(rest, "if", numbers) || !takeBlock(rest, "fff", numbers) ||
          !takeBlock(rest, "fffffffff", numbers)) {
        return -1;
      }
      const long id = numbers.integers[0];
      if ((withHead ? id - 1 : id) != chosenIndex) {
        continue;
      }
      matched = true;
      if (numbers.reals[0] == -1.0F) {
        const Store identity;
        for (auto row = 0; row < 3; ++row) {
          for (auto column = 0; column < 3; ++column) {
            bodyStore.rotation[row][column] = identity.rotation[row][column];
          }
        }
      } else {
        keep(numbers, bodyStore);
        marking = 1;
      }
    }
    if (!matched) {
      marking = -1;
    }
    return 0;
  }

  int readDevices(const std::string& line, std::size_t skipped, int leading, const std::string& head, bool newFormat) {
    if (line.size() < skipped) {
      return -1;
    }
    std::string rest = line.substr(skipped);
    int count = 0;
    for (int i = 0; i < leading; ++i) {
      if (!takeInteger(rest, count)) {
        return -1;
      }
    }
    for (int i = 0; i < count; ++i) {
      Numbers numbers;
      if (!takeBlock(rest, head, numbers) || !takeBlock(rest, "fff", numbers) ||
          !takeBlock(rest, "fffffffff", numbers) || (newFormat && !takeBlock(rest, "", numbers))) {
        return -1;
      }
      if ((newFormat ? i : numbers.integers[0]) != chosenIndex) {
        continue;
      }
      if (numbers.reals[0] == -1.0F) {
        marking = -1;
      } else {
        keep(numbers, deviceStore);
        deviceStore.buttons = numbers.integers[1];
        marking = 1;
      }
    }
    return 0;
  }
};

#endif
