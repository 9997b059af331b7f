// Numeric entry of three values, X, Y and Z, reported as one triple.
#ifndef XYZWIDGET_H
#define XYZWIDGET_H

#include <QString>
#include <QWidget>

#include "bsDoubleWidget.h"

class QGroupBox;

/// Three bsDoubleWidgets side by side or one above the other, optionally in a group box. The unit is the client's.
///
/// Any change is reported as the triple of current values. The editing brackets of the three fields are passed on as
/// they come; setValues() and adjustValues() set all three at once with one report and without a bracket.
///
/// The order of the virtual operations and of the signals and slots is part of the interface.
class xyzWidget : public QWidget {
  Q_OBJECT
  Q_PROPERTY(double xValue READ xValue WRITE setXValue)
  Q_PROPERTY(double yValue READ yValue WRITE setYValue)
  Q_PROPERTY(double zValue READ zValue WRITE setZValue)
  Q_PROPERTY(QString xLabel READ xLabel WRITE setXLabel)
  Q_PROPERTY(QString yLabel READ yLabel WRITE setYLabel)
  Q_PROPERTY(QString zLabel READ zLabel WRITE setZLabel)
  Q_PROPERTY(QString groupTitle READ groupTitle WRITE setGroupTitle)
  Q_PROPERTY(bool horizontal READ getLayoutHorizontal WRITE setLayoutHorizontal)

 public:
  /// The defaults are those of a widget placed by a form.
  explicit xyzWidget(QWidget* parent = nullptr, bsDoubleMode mode = bsDoubleWheel, double minimum = 0.0,
                     double maximum = 100.0, bool wrapping = false);
  ~xyzWidget() override;

  virtual double xValue() const;
  virtual double yValue() const;
  virtual double zValue() const;
  virtual QString xLabel() const;
  virtual QString yLabel() const;
  virtual QString zLabel() const;
  virtual bool getLayoutHorizontal() const;
  virtual void setSuffix(const QString& suffix);
  virtual void setStep(double step);
  virtual void setMode(bsDoubleMode mode);
  virtual void showGroupBox(bool show);
  virtual void setGroupTitle(const QString& title);
  virtual QString groupTitle() const;

 public slots:
  /// Sets all three with one report; values all within 1e-5 of the current ones change nothing.
  virtual void setValues(double x, double y, double z);
  virtual void adjustValues(double x, double y, double z);
  virtual void setXValue(double value);
  virtual void setYValue(double value);
  virtual void setZValue(double value);
  virtual void setLabels(const QString& xLabel, const QString& yLabel, const QString& zLabel);
  virtual void setXLabel(QString label);
  virtual void setYLabel(QString label);
  virtual void setZLabel(QString label);
  virtual void reset();
  /// The three fields go into the widget's own layout, also while the group box is shown (kept on purpose).
  virtual void setLayoutHorizontal(bool horizontal);
  virtual void setXRange(double minimum, double maximum);
  virtual void setYRange(double minimum, double maximum);
  virtual void setZRange(double minimum, double maximum);
  virtual void setXWrapping(bool wrapping);
  virtual void setYWrapping(bool wrapping);
  virtual void setZWrapping(bool wrapping);
  void xyzChanged(double value);

 signals:
  void valueChanged(double x, double y, double z);
  void xyzEditingBegin();
  void xyzEditingFinished();

 private:
  void create(bsDoubleMode mode, double minimum, double maximum, bool wrapping);
  void moveFieldsTo(QWidget* parent);

  QGroupBox* groupBox_ = nullptr;
  bsDoubleWidget* x_ = nullptr;
  bsDoubleWidget* y_ = nullptr;
  bsDoubleWidget* z_ = nullptr;
  bool horizontal_ = true;
};

#endif
