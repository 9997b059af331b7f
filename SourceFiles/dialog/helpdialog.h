// Help window that explains the mouse bindings of the body view.
#ifndef HELPDIALOG_H
#define HELPDIALOG_H

#include <QDialog>

#include <memory>

namespace Ui {
class HelpDialog;
}

/// Created on demand and run modally; its width is fixed.
class HelpDialog : public QDialog {
  Q_OBJECT

 public:
  explicit HelpDialog(QWidget* parent = nullptr);
  ~HelpDialog() override;

 private:
  std::unique_ptr<Ui::HelpDialog> ui_;
};

#endif
