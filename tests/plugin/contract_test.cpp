// The binary contract between host and plug-in, seen by a host compiled elsewhere: the library is loaded as a file, and
// every type is declared here once more, by slot number and field order. No header of the project is included.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QJsonObject>
#include <QLibrary>
#include <QMainWindow>
#include <QPluginLoader>
#include <QTimer>
#include <QVariant>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

// A value of a pointer type that this host knows by its name only.
QVariant pointerValue(const char* typeName, void* pointer) {
  using Helper = QtMetaTypePrivate::QMetaTypeFunctionHelper<void*>;
  const int type = QMetaType::registerNormalizedType(typeName, Helper::Destruct, Helper::Construct, sizeof(void*),
                                                     QMetaType::MovableType, nullptr);
  return QVariant(type, &pointer);
}

struct Call {
  int slot;
  std::string text;
};

std::string format(const char* text, va_list values) {
  char buffer[1000];
  std::vsnprintf(buffer, sizeof buffer, text, values);
  return buffer;
}

#define FORMATTED(first)                          \
  va_list values;                                 \
  va_start(values, first);                        \
  const std::string text = format(first, values); \
  va_end(values)

// Twenty virtual slots and no data; the numbers are those of the contract. A slot that must never be called fails.
class SlotHost {
 public:
  virtual int slot0() { return unused(0); }
  virtual int slot1() { return unused(1); }
  virtual int slot2() { return unused(2); }
  virtual int slot3() { return unused(3); }
  virtual int slot4(char* answer, const char* text_, ...) {
    FORMATTED(text_);
    calls().push_back({4, text});
    return answerTo(text, answer);
  }
  virtual int slot5() { return unused(5); }
  virtual int slot6(char* answer, const char* text_, ...) {
    FORMATTED(text_);
    calls().push_back({6, text});
    return answerTo(text, answer);
  }
  virtual int slot7(int* answer, const char* text_, ...) {
    FORMATTED(text_);
    calls().push_back({7, text});
    char word[200] = "";
    if (answerTo(text, word) != 0) {
      return 1;
    }
    *answer = std::stoi(word);
    return 0;
  }
  virtual int slot8() { return unused(8); }
  virtual int slot9() { return unused(9); }
  virtual int slot10(double* answer, int count, const char* text_, ...) {
    FORMATTED(text_);
    calls().push_back({10, text + " #" + std::to_string(count)});
    for (int i = 0; i < count; ++i) {
      answer[i] = 0.0;
    }
    if (count == 3) {  // four markers on the corners of a tetrahedron
      const int marker = std::stoi(text.substr(text.size() - 2));
      answer[0] = marker == 2 ? 70.0 : 0.0;
      answer[1] = marker == 3 ? 50.0 : 0.0;
      answer[2] = marker == 4 ? 30.0 : 0.0;
    }
    return 0;
  }
  virtual int slot11() { return unused(11); }
  virtual int slot12(const char* text_, ...) {
    FORMATTED(text_);
    calls().push_back({12, text});
    return 0;
  }
  virtual int slot13(const char* tag, void*) { return noted(13, tag); }
  virtual int slot14(const char* tag, void*) { return noted(14, tag); }
  virtual int slot15() { return unused(15); }
  virtual int slot16() { return unused(16); }
  virtual int slot17(const char* receiver, const char* sender, int kind, const char* text) {
    return noted(17, std::string(receiver) + " " + sender + " " + std::to_string(kind) + " " + text);
  }
  virtual int slot18(const char* name, void* receiver) {
    messageReceiver() = receiver;
    return noted(18, name);
  }
  virtual int slot19(const char* name, void*) { return noted(19, name); }

  static std::vector<Call>& calls() {
    static std::vector<Call> all;
    return all;
  }
  static void*& messageReceiver() {
    static void* receiver = nullptr;
    return receiver;
  }

 private:
  static int unused(int slot) {
    ADD_FAILURE() << "slot " << slot << " was called";
    return -1;
  }
  static int noted(int slot, const std::string& text) {
    calls().push_back({slot, text});
    return 0;
  }
  static int answerTo(const std::string& text, char* answer) {
    static const std::pair<const char*, const char*> known[] = {
        {"config is_changeable", "yes"},
        {"tracking available", "yes"},
        {"korvex2 get wandgrip output_6dw", "korvex2 set wandgrip output_6dw no"},
        {"korvex2 tracking start", "korvex2 ok"},
        {"korvex2 tracking stop", "korvex2 ok"},
        {"status active", "mea"},
        {"wandgrip multiuser_available", "no"},
        {"wandgrip multiuser_with_head_available", "no"},
        {"body number_of_types", "1"},
        {"body type t01", "standard"},
        {"body number_of_bodies standard", "1"},
        {"body number_of_bodies wandgrip", "0"},
        {"body type_desc standard", "\"Standard body\""},
        {"body calibrated standard b01", "yes"},
        {"body target_type standard b01", "'tt_std'"},
        {"body desc standard b01", "\"Head\""},
        {"body number_of_marker standard b01", "4"}};
    for (const auto& [question, reply] : known) {
      if (text == question) {
        std::snprintf(answer, 200, "%s", reply);
        return 0;
      }
    }
    ADD_FAILURE() << "unexpected text \"" << text << "\"";
    return 1;
  }
};

}  // namespace

// Not in the unnamed namespace: the optimiser would know that nothing derives from these, and call nothing.
namespace contract {

// The module as the host sees it: slots in this order.
class ModuleView {
 public:
  virtual ~ModuleView() = default;
  virtual void aboutToExit() = 0;
  virtual void exit() = 0;
  virtual QString name() const = 0;
  virtual QString version() const = 0;
  struct Entry {
    QAction* action;
    std::int32_t first;
    QString menu;
    std::int32_t second;
    QWidget* widget;
    std::int32_t last;
  };
  virtual QList<Entry*> entries() = 0;
  virtual void setParameter(QString name, QVariant value) = 0;
};

class ReceiverView {
 public:
  virtual int transmit(int kind, const char* sender, const char* text) = 0;

 protected:
  ~ReceiverView() = default;
};

}  // namespace contract

namespace {

using contract::ModuleView;
using contract::ReceiverView;

constexpr const char* identifier = "org.bodyadjust.korvex2.gui.Module/0.2.0";

class Contract : public testing::Test {
 protected:
  void SetUp() override {
    SlotHost::calls().clear();
    root = loader.instance();
    ASSERT_NE(root, nullptr) << qPrintable(loader.errorString());
    module = static_cast<ModuleView*>(root->qt_metacast(identifier));
    ASSERT_NE(module, nullptr);
  }
  void TearDown() override {
    if (root != nullptr) {
      module->aboutToExit();
      module->exit();
      delete root;
      loader.unload();
    }
  }
  void handOver() {
    module->setParameter("CommandManager", pointerValue("IOManager*", &host));
    module->setParameter("ModuleParent", QVariant::fromValue<QWidget*>(&window));
    module->setParameter("BackendVersions", pointerValue("BackendVersions*", versions));
    module->setParameter("ObserverMode", true);
  }
  // Runs the dialog by its menu action and closes it again from inside; returns the calls in between.
  std::vector<Call> openAndClose(const std::function<void()>& open) {
    SlotHost::calls().clear();
    int tries = 0;
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&tries] {
      if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        dialog->reject();
      } else if (++tries > 200) {
        ADD_FAILURE() << "no dialog opened";
      }
    });
    closer.start(50);
    open();
    return SlotHost::calls();
  }

  QPluginLoader loader{PLUGIN_FILE};
  SlotHost host;
  QMainWindow window;
  std::int32_t versions[6] = {9, 9, 9, 1, 20, -1};
  QObject* root = nullptr;
  ModuleView* module = nullptr;
};

std::vector<std::string> texts(const std::vector<Call>& calls, int slot) {
  std::vector<std::string> found;
  for (const Call& call : calls) {
    if (call.slot == slot) {
      found.push_back(call.text);
    }
  }
  return found;
}

TEST_F(Contract, TheLibraryNamesItsInterfaceBeforeItIsLoaded) {
  EXPECT_EQ(QPluginLoader(PLUGIN_FILE).metaData().value("IID").toString(), identifier);
  EXPECT_EQ(QPluginLoader(PLUGIN_FILE).metaData().value("className").toString(), "BodyAdjustmentModule");
}

TEST_F(Contract, TheLibraryHasOneRoot) {
  QLibrary library(PLUGIN_FILE);
  using Instance = QObject* (*)();
  const auto instance = reinterpret_cast<Instance>(library.resolve("qt_plugin_instance"));
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(instance(), root);
  EXPECT_EQ(instance(), root);
}

TEST_F(Contract, TheLibraryAnswersOlderLoaders) {
  QLibrary library(PLUGIN_FILE);
  using Query = const char* (*)();
  const auto query = reinterpret_cast<Query>(library.resolve("qt_plugin_query_verification_data"));
  ASSERT_NE(query, nullptr);
  const QStringList lines = QString::fromLatin1(query()).split('\n');
  ASSERT_EQ(lines.size(), 4);
  EXPECT_EQ(lines[0], "pattern=QT_PLUGIN_VERIFICATION_DATA");
  EXPECT_EQ(lines[1], QStringLiteral("version=") + QT_VERSION_STR);
  EXPECT_TRUE(lines[2] == "debug=false" || lines[2] == "debug=true");
  EXPECT_TRUE(lines[3].startsWith("buildkey=") && lines[3].size() > 12);
}

TEST_F(Contract, TheImagesAreRegisteredWhileTheLibraryIsLoaded) {
  QLibrary library(PLUGIN_FILE);
  EXPECT_NE(library.resolve("_Z29qInitResources_bodyAdjustmentv"), nullptr);
  EXPECT_NE(library.resolve("_Z32qCleanupResources_bodyAdjustmentv"), nullptr);
  EXPECT_FALSE(QImage(":/lock.png").isNull());
}

TEST_F(Contract, TheModuleTellsWhoItIs) {
  EXPECT_EQ(module->name(), "GUI Body Adjustment");
  EXPECT_EQ(module->version(), "v3.1.4");
  EXPECT_STREQ(root->metaObject()->className(), "BodyAdjustmentModule");
}

TEST_F(Contract, TheMenuEntryHasItsFieldsInPlace) {
  handOver();
  const QList<ModuleView::Entry*> entries = module->entries();
  ASSERT_EQ(entries.size(), 1);
  EXPECT_EQ(entries[0]->first, 680);
  EXPECT_EQ(entries[0]->menu, "&Calibration");
  EXPECT_EQ(entries[0]->second, 300);
  EXPECT_EQ(entries[0]->last, 0);
  EXPECT_EQ(entries[0]->action->text(), "Body &adjustment");
  EXPECT_EQ(entries[0]->widget->metaObject()->className(), std::string("BodyAdjustmentDialog"));
  EXPECT_EQ(texts(SlotHost::calls(), 18), std::vector<std::string>{"BodyAdjustmentModule"});
}

TEST_F(Contract, EveryOperationGoesThroughItsSlot) {
  handOver();
  ModuleView::Entry* entry = module->entries().first();
  const std::vector<Call> calls = openAndClose([entry] { entry->action->trigger(); });
  EXPECT_EQ(texts(calls, 4), (std::vector<std::string>{"korvex2 get wandgrip output_6dw", "korvex2 tracking start",
                                                       "korvex2 tracking stop"}));
  const std::vector<std::string> asked = texts(calls, 6);
  ASSERT_GE(asked.size(), 2U);
  EXPECT_EQ(asked[0], "config is_changeable");
  EXPECT_EQ(asked[1], "tracking available");
  const std::vector<std::string> counted = texts(calls, 7);
  ASSERT_GE(counted.size(), 3U);
  EXPECT_EQ(counted[0], "body number_of_bodies standard");
  EXPECT_EQ(counted[1], "body number_of_bodies wandgrip");
  EXPECT_EQ(counted[2], "body number_of_types");
  EXPECT_EQ(texts(calls, 12), std::vector<std::string>{"output active chmon 6dw2 yes"});
  EXPECT_EQ(texts(calls, 13), (std::vector<std::string>{"6d", "6dw2"}));
  EXPECT_EQ(texts(calls, 14), (std::vector<std::string>{"6d", "6dw2"}));
  SlotHost::calls().clear();
  module->aboutToExit();
  EXPECT_EQ(texts(SlotHost::calls(), 19), std::vector<std::string>{"BodyAdjustmentModule"});
}

TEST_F(Contract, AMessageOpensTheDialogOnABodyAndIsAnswered) {
  handOver();
  module->entries();
  auto* receiver = static_cast<ReceiverView*>(SlotHost::messageReceiver());
  ASSERT_NE(receiver, nullptr);
  const std::vector<Call> calls =
      openAndClose([receiver] { EXPECT_EQ(receiver->transmit(3, "Asker", "OpenBodyAdjustmentDialog standard|1"), 0); });
  EXPECT_EQ(texts(calls, 10),
            (std::vector<std::string>{"body marker standard b01 m01 #3", "body marker_emission standard b01 m01 #4",
                                      "body marker standard b01 m02 #3", "body marker_emission standard b01 m02 #4",
                                      "body marker standard b01 m03 #3", "body marker_emission standard b01 m03 #4",
                                      "body marker standard b01 m04 #3", "body marker_emission standard b01 m04 #4"}));
  EXPECT_EQ(texts(calls, 17), std::vector<std::string>{"Asker BodyAdjustmentModule 1 reopen"});
}

TEST_F(Contract, TheBackendVersionIsReadFromFieldsFourToSix) {
  handOver();
  versions[3] = 1;
  versions[4] = 8;  // below the lock's gate: the lock is not asked for
  ModuleView::Entry* entry = module->entries().first();
  const std::vector<Call> calls = openAndClose([entry] { entry->action->trigger(); });
  ASSERT_FALSE(texts(calls, 6).empty());
  EXPECT_EQ(texts(calls, 6)[0], "tracking available");
}

TEST_F(Contract, AnotherTypeThanTheChannelsIsRefused) {
  module->setParameter("CommandManager", 42);
  module->setParameter("ModuleParent", QVariant::fromValue<QWidget*>(&window));
  module->entries();
  EXPECT_TRUE(SlotHost::calls().empty());
}

}  // namespace
