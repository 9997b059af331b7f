// Swatch drawing and colour choice of the colour button.
#include "bsColorButton.h"

#include <QBrush>
#include <QColorDialog>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSizePolicy>

namespace {

constexpr int swatchWidth = 32;
constexpr int swatchHeight = 28;

}  // namespace

bsColorButton::bsColorButton(const QColor& color, QWidget* parent) : QPushButton(parent) {
  setColor(color);
  setUp();
}

bsColorButton::bsColorButton(QWidget* parent) : QPushButton(parent) { setUp(); }

bsColorButton::~bsColorButton() = default;

void bsColorButton::setUp() {
  setIconSize(QSize(swatchWidth, swatchHeight));  // the style's own icon size would shrink the swatch
  connect(this, &QPushButton::clicked, this, &bsColorButton::chooseColor);
  setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
}

void bsColorButton::chooseColor() {
  const QColor chosen = QColorDialog::getColor(color_, nullptr);
  if (chosen.isValid()) {
    setColor(chosen);
  }
}

void bsColorButton::setColor(const QColor& color) {
  if (color == color_) {
    return;
  }
  color_ = color;
  QPixmap swatch(swatchWidth, swatchHeight);
  swatch.fill(Qt::black);
  QPainter painter(&swatch);
  painter.setBrush(QBrush(color_, Qt::SolidPattern));
  painter.drawRect(1, 1, swatchWidth - 2, swatchHeight - 2);
  painter.end();
  setIcon(QIcon(swatch));
  emit colorChanged(color_);
}
