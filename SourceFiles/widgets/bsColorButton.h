// Push button that shows a colour as a swatch and lets the operator choose another one.
#ifndef BSCOLORBUTTON_H
#define BSCOLORBUTTON_H

#include <QColor>
#include <QPushButton>

/// Holds one colour, invalid (and without a swatch) until one is set. A click opens the standard colour dialog.
class bsColorButton : public QPushButton {
  Q_OBJECT

 public:
  bsColorButton(const QColor& color, QWidget* parent);
  explicit bsColorButton(QWidget* parent = nullptr);
  ~bsColorButton() override;

  QColor color() const { return color_; }

 public slots:
  /// Asks the operator; a cancelled dialog changes nothing.
  void chooseColor();
  /// Shows and reports the colour; the colour already shown changes nothing.
  void setColor(const QColor& color);

 signals:
  void colorChanged(const QColor& color);

 private:
  void setUp();

  QColor color_;
};

#endif
