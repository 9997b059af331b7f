// Answers modal windows in tests as an operator would, and closes those that nobody expected.
#ifndef KORVEX2_TESTS_MODALWATCH_H
#define KORVEX2_TESTS_MODALWATCH_H

#include <QMessageBox>
#include <QObject>
#include <QTimer>

#include <functional>
#include <vector>

/// While it lives, every modal window that opens is taken from the event loop and handed to the next expectation in
/// line. A window without an expectation is closed and fails the test; so does an expectation that is never met, and
/// a modal window that is still open after `limitMs`.
///
///   ModalWatch watch;
///   watch.expectBox("Body Adjustment", "Apply the changes?", QMessageBox::Yes);
///   selector->setCurrentIndex(2);
class ModalWatch : public QObject {
  Q_OBJECT

 public:
  struct Box {
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton;
    QMessageBox::Icon icon;
  };

  explicit ModalWatch(int limitMs = 15000);
  ~ModalWatch() override;

  /// The next modal window must be a message box with this title and text; it is answered with `answer`.
  void expectBox(const QString& title, const QString& text, QMessageBox::StandardButton answer);
  /// The next modal window is handed to `act` once it is visible; `act` must lead to its end.
  void expectWindow(std::function<void(QWidget*)> act);
  /// Windows of this class name are left alone (the dialog under test itself, run with exec()).
  void ignore(const QByteArray& className) { ignored_.push_back(className); }
  /// Boxes answered so far, in order.
  const std::vector<Box>& boxes() const { return boxes_; }

 private:
  void poll();
  std::vector<std::function<void(QWidget*)>> expected_;
  std::vector<QByteArray> ignored_;
  std::vector<Box> boxes_;
  std::vector<QWidget*> seen_;
  QTimer timer_;
  int limitMs_;
  int waitedMs_ = 0;
};

#endif
