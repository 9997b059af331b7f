// A label of one line that ends with dots when there is too little room.
#ifndef KORVEX2_HOST_ELIDEDLABEL_H
#define KORVEX2_HOST_ELIDEDLABEL_H

#include <QLabel>

namespace korvex2 {

/// Shows plain text; the whole text is the tool tip. Never asks for more width than it is given.
class ElidedLabel : public QLabel {
  Q_OBJECT

 public:
  explicit ElidedLabel(QWidget* parent = nullptr);
  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace korvex2

#endif
