// The dialog that chooses the backend, by mouse and keyboard, and what is remembered of it.
#include "connectdialog.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <functional>
#include <string>

#include "connectionactions.h"
#include "connectionsettings.h"
#include "frontend.h"
#include "lineserver.h"
#include "modalwatch.h"
#include "networkconnection.h"
#include "scriptedconnection.h"

using namespace korvex2;
using namespace std::chrono_literals;

namespace {

class Connecting : public testing::Test {
 protected:
  void SetUp() override {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    frontend = std::make_unique<Frontend>(std::make_unique<ScriptedConnection>());
    frontend->window().show();
    QApplication::setActiveWindow(&frontend->window());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&frontend->window()));
  }
  /// Opens the dialog by its entry of the File menu and goes through it; one that is still open is left by Escape.
  void open(const std::function<void(ConnectDialog&)>& steps) {
    auto* action = frontend->window().findChild<QAction*>("connectBackend");
    ASSERT_NE(action, nullptr);
    bool opened = false;
    watch.expectWindow([&](QWidget* window) {
      // Not from within the watch, which must go on watching.
      QTimer::singleShot(0, window, [&opened, &steps, window] {
        auto* dialog = qobject_cast<ConnectDialog*>(window);
        ASSERT_NE(dialog, nullptr);
        opened = true;
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog));
        QApplication::setActiveWindow(dialog);
        steps(*dialog);
        if (dialog->isVisible()) {
          QTest::keyClick(dialog, Qt::Key_Escape);
        }
      });
    });
    action->trigger();
    EXPECT_TRUE(opened);
    QTest::qWait(30);  // the watch sees that no window is open: the next one may lie at the same address
  }
  static QRadioButton* simulated(ConnectDialog& dialog) { return dialog.findChild<QRadioButton*>("simulated"); }
  static QRadioButton* network(ConnectDialog& dialog) { return dialog.findChild<QRadioButton*>("network"); }
  static QComboBox* address(ConnectDialog& dialog) { return dialog.findChild<QComboBox*>("address"); }
  static QSpinBox* timeout(ConnectDialog& dialog) { return dialog.findChild<QSpinBox*>("timeout"); }
  static QPushButton* button(ConnectDialog& dialog, const char* name) { return dialog.findChild<QPushButton*>(name); }
  static std::string message(ConnectDialog& dialog) {
    return dialog.findChild<QLabel*>("message")->text().toStdString();
  }
  /// A key as an operator presses it: it goes to whatever has the focus.
  static void press(ConnectDialog& dialog, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QApplication::setActiveWindow(&dialog);
    QWidget* const focused = dialog.focusWidget();
    QTest::keyClick(focused != nullptr ? focused : &dialog, key, modifiers);
  }
  static void type(ConnectDialog& dialog, const QString& text) {
    address(dialog)->lineEdit()->setFocus();
    address(dialog)->lineEdit()->selectAll();
    QTest::keyClicks(address(dialog)->lineEdit(), text);
  }
  static QStringList offered(ConnectDialog& dialog) {
    QStringList texts;
    for (int i = 0; i < address(dialog)->count(); ++i) {
      texts += address(dialog)->itemText(i);
    }
    return texts;
  }
  QString place() const { return QStringLiteral("127.0.0.1:%1").arg(server.port()); }
  std::string status() const { return frontend->window().findChild<QLabel*>("connectionStatus")->text().toStdString(); }

  QTemporaryDir settings;
  LineServer server;
  std::unique_ptr<Frontend> frontend;
  ModalWatch watch;
};

}  // namespace

TEST_F(Connecting, TheEntryStandsFirstInTheFileMenu) {
  const QMenu* file = frontend->window().menuBar()->actions().constFirst()->menu();
  EXPECT_EQ(file->actions().at(0)->text(), "&Connect...");
  EXPECT_EQ(file->actions().at(1)->text(), "Connect &again");
}

TEST_F(Connecting, ShowsWhatItIsConnectedToAtFirst) {
  open([](ConnectDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Connect");
    EXPECT_TRUE(simulated(dialog)->isChecked());
    EXPECT_TRUE(simulated(dialog)->isEnabled());
    EXPECT_FALSE(address(dialog)->isEnabled());
    EXPECT_EQ(address(dialog)->currentText(), "127.0.0.1:27410");
    EXPECT_EQ(timeout(dialog)->value(), 2000);
    EXPECT_EQ(timeout(dialog)->minimum(), 100);
    EXPECT_EQ(timeout(dialog)->maximum(), 60000);
    EXPECT_TRUE(button(dialog, "confirm")->isDefault());
    EXPECT_FALSE(button(dialog, "keepTrying")->isVisible());
    EXPECT_FALSE(dialog.findChild<QProgressBar*>("progress")->isVisible());
  });
  EXPECT_EQ(status(), "Simulated backend");
}

TEST_F(Connecting, ByKeyboardAlone) {
  open([this](ConnectDialog& dialog) {
    press(dialog, Qt::Key_N, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return network(dialog)->isChecked(); }, 3000));  // it is seen to be pressed
    press(dialog, Qt::Key_A, Qt::AltModifier);
    EXPECT_TRUE(address(dialog)->lineEdit()->hasFocus());
    QTest::keyClick(address(dialog)->lineEdit(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(address(dialog)->lineEdit(), place());
    press(dialog, Qt::Key_T, Qt::AltModifier);
    EXPECT_TRUE(timeout(dialog)->hasFocus());
    QTest::keyClick(timeout(dialog), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(timeout(dialog), "750");
    QTest::keyClick(timeout(dialog), Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog.isVisible(); }, 3000));
  });
  EXPECT_EQ(status(), "Connected to " + place().toStdString());
  auto* connection = dynamic_cast<NetworkConnection*>(&frontend->connection());
  ASSERT_NE(connection, nullptr);
  EXPECT_EQ(connection->options().commandTimeout, 750ms);
  EXPECT_EQ(ConnectionSettings::recent(), QStringList{place()});
  EXPECT_EQ(ConnectionSettings::timeout(), 750);
}

TEST_F(Connecting, ByMouse) {
  open([this](ConnectDialog& dialog) {
    QTest::mouseClick(network(dialog), Qt::LeftButton, {}, QPoint(10, network(dialog)->height() / 2));
    type(dialog, place());
    QTest::mouseClick(button(dialog, "confirm"), Qt::LeftButton);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog.isVisible(); }, 3000));
  });
  EXPECT_EQ(status(), "Connected to " + place().toStdString());
  EXPECT_EQ(server.connections(), 1) << "the connection that the dialog made is the one that is used";
  open([this](ConnectDialog& dialog) {
    EXPECT_TRUE(network(dialog)->isChecked());
    EXPECT_FALSE(simulated(dialog)->isEnabled()) << "nobody knows how to make one here";
    EXPECT_EQ(address(dialog)->currentText(), place());
    EXPECT_EQ(offered(dialog), QStringList{place()});
  });
}

TEST_F(Connecting, WhatIsNoAddressCannotBeConnectedTo) {
  open([this](ConnectDialog& dialog) {
    network(dialog)->click();
    type(dialog, "host:0");
    EXPECT_EQ(message(dialog), "The port has to be a number from 1 to 65535.");
    EXPECT_FALSE(button(dialog, "confirm")->isEnabled());
    QTest::keyClick(address(dialog)->lineEdit(), Qt::Key_Return);
    EXPECT_TRUE(dialog.isVisible());
    QTest::keyClick(address(dialog)->lineEdit(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(address(dialog)->lineEdit(), Qt::Key_Delete);
    EXPECT_EQ(message(dialog), "Type the address of a backend: a host, or host and port.");
    EXPECT_FALSE(button(dialog, "confirm")->isEnabled());
    simulated(dialog)->click();
    EXPECT_TRUE(button(dialog, "confirm")->isEnabled());
    network(dialog)->click();
    EXPECT_FALSE(button(dialog, "confirm")->isEnabled());
    type(dialog, place());
    EXPECT_EQ(message(dialog), "");
    EXPECT_TRUE(button(dialog, "confirm")->isEnabled());
  });
  EXPECT_EQ(status(), "Simulated backend");
  EXPECT_TRUE(ConnectionSettings::recent().isEmpty());
}

TEST_F(Connecting, IsSeenWhileItGoesOnAndCanBeCancelled) {
  server.react([](const QByteArray&) { return Reaction::silence(); });
  open([this](ConnectDialog& dialog) {
    network(dialog)->click();
    type(dialog, place());
    button(dialog, "confirm")->click();
    EXPECT_EQ(message(dialog), "Connecting to " + place().toStdString() + "...");
    EXPECT_TRUE(dialog.findChild<QProgressBar*>("progress")->isVisible());
    EXPECT_FALSE(address(dialog)->isEnabled());
    EXPECT_FALSE(simulated(dialog)->isEnabled());
    EXPECT_FALSE(button(dialog, "confirm")->isEnabled());
    EXPECT_TRUE(button(dialog, "cancel")->isEnabled());
    EXPECT_TRUE(QTest::qWaitFor([this] { return server.connections() == 1; }, 3000));
    QTest::mouseClick(button(dialog, "cancel"), Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
  });
  EXPECT_EQ(status(), "Simulated backend");
  EXPECT_TRUE(ConnectionSettings::recent().isEmpty());
}

TEST_F(Connecting, AFailureIsToldAndTheOperatorMayGoOnTrying) {
  server.stopListening();
  open([this](ConnectDialog& dialog) {
    network(dialog)->click();
    type(dialog, place());
    button(dialog, "confirm")->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return button(dialog, "keepTrying")->isVisible(); }, 3000));
    EXPECT_EQ(message(dialog), place().toStdString() + " could not be reached: no backend listens there.");
    EXPECT_TRUE(address(dialog)->isEnabled());
    EXPECT_TRUE(button(dialog, "confirm")->isEnabled());
    press(dialog, Qt::Key_K, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog.isVisible(); }, 3000));
  });
  EXPECT_EQ(status(), "Reconnecting to " + place().toStdString() + "...");
  EXPECT_EQ(ConnectionSettings::recent(), QStringList{place()});
  server.listenAgain();
  frontend->window().findChild<QAction*>("connectAgain")->trigger();
  EXPECT_TRUE(QTest::qWaitFor([&] { return status() == "Connected to " + place().toStdString(); }, 4000));
}

TEST_F(Connecting, AfterAFailureAnotherAddressCanBeTriedOrEverythingLeftAsItIs) {
  open([this](ConnectDialog& dialog) {
    network(dialog)->click();
    server.stopListening();
    type(dialog, place());
    button(dialog, "confirm")->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return button(dialog, "keepTrying")->isVisible(); }, 3000));
    type(dialog, "localhost");
    EXPECT_FALSE(button(dialog, "keepTrying")->isVisible()) << "that was another address";
    EXPECT_EQ(message(dialog), "");
  });
  EXPECT_EQ(status(), "Simulated backend");
  EXPECT_TRUE(ConnectionSettings::recent().isEmpty());
  EXPECT_EQ(frontend->window().findChild<QAction*>("connectAgain")->isEnabled(), false);
}

TEST_F(Connecting, WhenTheBackendComesWhileTheDialogWaitsItIsConnectedTo) {
  server.stopListening();
  open([this](ConnectDialog& dialog) {
    network(dialog)->click();
    type(dialog, place());
    button(dialog, "confirm")->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return button(dialog, "keepTrying")->isVisible(); }, 3000));
    server.listenAgain();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog.isVisible(); }, 4000));
  });
  EXPECT_EQ(status(), "Connected to " + place().toStdString());
}

TEST_F(Connecting, BackToTheSimulatedBackend) {
  int made = 0;
  frontend->connections().offerSimulated([&made] {
    ++made;
    return std::make_unique<ScriptedConnection>();
  });
  open([](ConnectDialog& dialog) {
    QTest::keyClick(&dialog, Qt::Key_Return);
    EXPECT_FALSE(dialog.isVisible());
  });
  EXPECT_EQ(made, 0) << "it is the present one already";
  frontend->connectTo(std::make_unique<NetworkConnection>(BackendAddress{QStringLiteral("127.0.0.1"), server.port()}));
  EXPECT_EQ(status(), "Connected to " + place().toStdString());
  open([](ConnectDialog& dialog) {
    EXPECT_TRUE(network(dialog)->isChecked());
    simulated(dialog)->click();
    button(dialog, "confirm")->click();
    EXPECT_FALSE(dialog.isVisible());
  });
  EXPECT_EQ(made, 1);
  EXPECT_EQ(status(), "Simulated backend");
}

TEST_F(Connecting, ATimeOutOfTheCommandLineIsOfferedFirst) {
  ConnectionSettings::setTimeout(5000);
  open([](ConnectDialog& dialog) { EXPECT_EQ(timeout(dialog)->value(), 5000); });
  frontend->connections().setTimeout(300);
  open([](ConnectDialog& dialog) { EXPECT_EQ(timeout(dialog)->value(), 300); });
}

TEST_F(Connecting, RecentAddressesAreTheLatestFirstEachOnceAndNoMoreThanEight) {
  for (int i = 1; i <= 10; ++i) {
    ConnectionSettings::remember({QStringLiteral("host%1").arg(i), 4000});
  }
  ConnectionSettings::remember({QStringLiteral("host5"), 4000});
  ConnectionSettings::remember({QStringLiteral("::1"), 4000});
  const QStringList expected{"[::1]:4000", "host5:4000", "host10:4000", "host9:4000",
                             "host8:4000", "host7:4000", "host6:4000",  "host4:4000"};
  EXPECT_EQ(ConnectionSettings::recent(), expected);
  open([&](ConnectDialog& dialog) {
    EXPECT_EQ(offered(dialog), expected);
    EXPECT_EQ(address(dialog)->currentText(), expected.constFirst());
  });
}

TEST_F(Connecting, SettingsThatMakeNoSenseAreLeftOut) {
  QSettings stored("korvex2", "frontend");
  stored.setValue("connection/recent", QStringList{"host:0", "", "HOST", "host:27410", "two words", "[::1]"});
  stored.setValue("connection/timeout", "soon");
  EXPECT_EQ(ConnectionSettings::recent(), (QStringList{"host:27410", "[::1]:27410"}));
  EXPECT_EQ(ConnectionSettings::timeout(), 2000);
  stored.setValue("connection/timeout", 99);
  EXPECT_EQ(ConnectionSettings::timeout(), 2000);
  stored.setValue("connection/timeout", 60001);
  EXPECT_EQ(ConnectionSettings::timeout(), 2000);
  stored.setValue("connection/recent", 17);
  stored.setValue("connection/timeout", 100);
  EXPECT_TRUE(ConnectionSettings::recent().isEmpty());
  EXPECT_EQ(ConnectionSettings::timeout(), 100);
}
