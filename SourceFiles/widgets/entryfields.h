// The two fields of a numeric entry: the toolkit's spin box and thumb wheel, smoothed for the hand that uses them.
#ifndef KORVEX2_ENTRYFIELDS_H
#define KORVEX2_ENTRYFIELDS_H

#include <qwt_wheel.h>

#include <QDoubleSpinBox>
#include <QString>
#include <QValidator>

#include <functional>

namespace korvex2 {

/// Spin box that understands the decimal point also where the locale writes a comma. Without this a point is refused
/// there, and an operator who types "1.5" without looking enters 15.
class EntrySpinBox final : public QDoubleSpinBox {
 public:
  using QDoubleSpinBox::QDoubleSpinBox;

  QValidator::State validate(QString& text, int& pos) const override;

 protected:
  /// Return selects the text and ends the entry; a field that stayed selected would look as if it had the focus.
  void focusOutEvent(QFocusEvent* event) override;
};

/// Thumb wheel that also tells of every release and of the loss of the focus, and that gathers fine scrolling.
///
/// A wheel whose value is set during a drag drops the drag and announces no release; the drag's edit would stay open.
/// Touch pads scroll by fractions of a notch, of which the plain wheel takes none (or a whole page each, with Ctrl).
class ThumbWheel final : public QwtWheel {
 public:
  ThumbWheel(QWidget* parent, std::function<void()> released, std::function<void(Qt::FocusReason)> focusLost);

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  std::function<void()> released_;
  std::function<void(Qt::FocusReason)> focusLost_;
  int scrolled_ = 0;  // what does not make a notch yet, in eighths of a degree
};

}  // namespace korvex2

#endif
