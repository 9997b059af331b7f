// Numeric entry of one floating-point value: a label, a spin box and a thumb wheel that nudges the spin box.
#ifndef BSDOUBLEWIDGET_H
#define BSDOUBLEWIDGET_H

#include <QMetaType>
#include <QString>
#include <QWidget>

class QBoxLayout;
class QColor;
class QDoubleSpinBox;
class QFont;
class QLabel;
class QwtWheel;

/// Which of the two entry fields is shown.
enum bsDoubleMode {
  bsDoubleSpin = 0,
  bsDoubleWheel = 1,
  bsDoubleSpinWheel = 2,
};

/// Where the label stands beside the fields, or the wheel beside the spin box.
enum bsDoublePosition {
  bsDoubleTop = 0,
  bsDoubleBottom = 1,
  bsDoubleLeft = 2,
  bsDoubleRight = 3,
};

/// Which way the thumb wheel turns.
enum bsDoubleOrientation {
  bsDoubleHorizontal = 0,
  bsDoubleVertical = 1,
};

Q_DECLARE_METATYPE(bsDoubleMode)
Q_DECLARE_METATYPE(bsDoublePosition)
Q_DECLARE_METATYPE(bsDoubleOrientation)

/// One value, edited with a spin box, a thumb wheel or both. The unit is the client's (see setSuffix()).
///
/// Every interactive change stands between editingBegin() and editingFinished(), whatever the number of values it goes
/// through, so that a client can make it one step of its undo history:
///
///   typing, spin box arrows    begins with the first changed value, ends with Return or when the focus leaves
///   wheel drag                 begins with the press, ends with the release
///   scroll wheel or keys       begins with the first step, ends when the mouse leaves the widget (for keys also when
///     on the thumb wheel       the focus leaves)
///
/// An edit stays open while editingFinished() is being delivered. A client may therefore call reset() from there: the
/// value returns to zero as the last value of that edit and nothing further begins or ends.
///
/// What a program sets is not an edit: setValue() only reports the value. A change that reset(), setRange(),
/// setWrapping(), setStep() or setDecimals() forces on the spin box outside an edit is announced by editingBegin() and
/// valueChanged() like any other, but it leaves no edit open (nobody would end it, and the next edit would lose its
/// beginning) and it leaves the keyboard focus where it is. adjustValue() does open an edit; its caller ends it with
/// setEditingFinished().
///
/// The order of the virtual operations and of the signals and slots is part of the interface.
class bsDoubleWidget : public QWidget {
  Q_OBJECT
  Q_PROPERTY(double value READ value WRITE setValue)
  Q_PROPERTY(QString label READ label WRITE setLabel)

 public:
  explicit bsDoubleWidget(QWidget* parent = nullptr, bsDoubleMode mode = bsDoubleSpinWheel, double minimum = 0.0,
                          double maximum = 100.0, bool wrapping = false);
  ~bsDoubleWidget() override;

#ifndef Q_MOC_RUN
  /// Does nothing. First among the virtual operations, yet a slot behind reset(): see there.
  virtual void languageChange();
#endif
  virtual double value() const;
  virtual QString label() const;
  /// While wrapping, the maximum moves by the old step less the new one, so that the step across the two ends is kept.
  virtual void setStep(double step);
  /// The spin box's maximum is one below the nominal maximum while wrapping: both ends are the same value.
  virtual void setWrapping(bool wrapping);
  virtual void setLabelColor(const QColor& color);

 public slots:
  /// `maximum` is the nominal one, see setWrapping().
  virtual void setRange(double minimum, double maximum);
  virtual void showLabel(bool show);
  virtual void setLabel(const QString& label);
  virtual void setLabelFont(const QFont& font);
  virtual void setSuffix(const QString& suffix);
  virtual void setDecimals(int decimals);
  /// Sets and reports a value without an editing bracket; a value within 1e-5 of the current one changes nothing.
  virtual void setValue(double value);
  /// Adds to the value as an edit: opens one unless one is open. An increment up to 1e-5 changes nothing.
  virtual void adjustValue(double inc);
  virtual void setMode(bsDoubleMode mode);
  virtual void setLabelPosition(bsDoublePosition position);
  virtual void setWheelPosition(bsDoublePosition position);
  virtual void setWheelOrientation(bsDoubleOrientation orientation);
  /// Wheel and value to zero; a value that changes by it is reported. Never ends an edit.
  virtual void reset();
#ifdef Q_MOC_RUN
  // The slot's place in the meta object differs from the operation's place in the virtual table.
  virtual void languageChange();
#endif
  /// Wheel to zero; the value stays.
  virtual void resetWheel();
  virtual void spinChanged(double inc);
  virtual void wheelChanged(double inc);
  virtual void setEditingBegin();
  virtual void setEditingFinished();
  virtual void setMouseEditingBegin();
  virtual void setMouseEditingFinished();

 signals:
  void valueChanged(double value);
  void editingFinished();
  void editingBegin();

 protected:
  void hideEvent(QHideEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  class ProgramChange;

  void createFields(double minimum, double maximum, bool wrapping);
  void connectFields();
  void nameFields();
  void takeFocus();
  void zeroWheel();
  void finishWheelEdit();

  QBoxLayout* outerLayout_ = nullptr;
  QBoxLayout* innerLayout_ = nullptr;
  QLabel* label_ = nullptr;
  QDoubleSpinBox* spin_ = nullptr;
  QwtWheel* wheel_ = nullptr;
  double lastWheelValue_ = 0.0;
  unsigned int wheelResets_ = 0;   // how often the wheel went back to zero
  bool editing_ = false;           // an edit is open
  bool mouseEditing_ = false;      // the wheel is being dragged
  bool wheelEditPending_ = false;  // the wheel was turned without a drag and the edit is not yet closed
  bool finishing_ = false;         // the open edit is being ended
  bool programChange_ = false;     // the value is being changed by the program
};

#endif
