// See modalwatch.h.
#include "modalwatch.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QPushButton>

#include <algorithm>

namespace {
constexpr int pollMs = 10;
}

ModalWatch::ModalWatch(int limitMs) : limitMs_(limitMs) {
  connect(&timer_, &QTimer::timeout, this, [this] { poll(); });
  timer_.start(pollMs);
}

ModalWatch::~ModalWatch() {
  if (!expected_.empty()) {
    ADD_FAILURE() << expected_.size() << " expected modal window(s) never opened";
  }
}

void ModalWatch::expectBox(const QString& title, const QString& text, QMessageBox::StandardButton answer) {
  expected_.push_back([this, title, text, answer](QWidget* window) {
    auto* box = qobject_cast<QMessageBox*>(window);
    if (box == nullptr) {
      ADD_FAILURE() << "expected the box \"" << qPrintable(text) << "\", got a " << window->metaObject()->className();
      window->close();
      return;
    }
    EXPECT_EQ(box->windowTitle().toStdString(), title.toStdString());
    EXPECT_EQ(box->text().toStdString(), text.toStdString());
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    if (box->defaultButton() != nullptr) {
      defaultButton = box->standardButton(box->defaultButton());
    }
    boxes_.push_back({box->windowTitle(), box->text(), box->standardButtons(), defaultButton, box->icon()});
    QAbstractButton* button = box->button(answer);
    if (button == nullptr) {
      ADD_FAILURE() << "the box \"" << qPrintable(text) << "\" lacks the button to press";
      box->close();
      return;
    }
    button->click();
  });
}

void ModalWatch::expectWindow(std::function<void(QWidget*)> act) { expected_.push_back(std::move(act)); }

void ModalWatch::poll() {
  QWidget* window = QApplication::activeModalWidget();
  if (window == nullptr || !window->isVisible()) {
    waitedMs_ = 0;
    seen_.clear();
    return;
  }
  const QByteArray className = window->metaObject()->className();
  const bool known = std::find(seen_.begin(), seen_.end(), window) != seen_.end();
  if (known || std::find(ignored_.begin(), ignored_.end(), className) != ignored_.end()) {
    waitedMs_ += pollMs;
    if (waitedMs_ > limitMs_) {
      ADD_FAILURE() << "a modal " << className.constData() << " stayed open for " << limitMs_ << " ms";
      waitedMs_ = 0;
      auto* dialog = qobject_cast<QDialog*>(window);
      dialog != nullptr ? dialog->done(QDialog::Rejected) : static_cast<void>(window->close());
    }
    return;
  }
  waitedMs_ = 0;
  if (expected_.empty()) {
    auto* box = qobject_cast<QMessageBox*>(window);
    ADD_FAILURE() << "unexpected modal " << className.constData() << " \"" << qPrintable(window->windowTitle())
                  << "\": " << (box != nullptr ? qPrintable(box->text()) : "");
    window->close();
    return;
  }
  seen_.push_back(window);
  auto act = expected_.front();
  expected_.erase(expected_.begin());
  act(window);
  if (QApplication::activeModalWidget() != window) {
    seen_.erase(std::remove(seen_.begin(), seen_.end(), window), seen_.end());
  }
}
