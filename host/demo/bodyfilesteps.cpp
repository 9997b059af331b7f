// See bodyfilesteps.h.
#include "demo/bodyfilesteps.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

#include "demo/demooperator.h"

namespace korvex2 {

void workBodyFileDialog(DemoOperator& hands, QAction* menuEntry, const QString& entry, const QString& file,
                        const QString& pictures) {
  if (menuEntry == nullptr) {
    hands.complain(QStringLiteral("the menu has no entry for %1").arg(pictures));
    return;
  }
  QWidget* before = hands.dialog();
  QTimer::singleShot(300, menuEntry, [&] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr) {
      hands.complain(QStringLiteral("no dialog opened for %1").arg(pictures));
      return;
    }
    hands.setDialog(dialog);
    hands.chooseEntry(QStringLiteral("body"), entry);
    hands.pressAndAnswer(QStringLiteral("choose"), [&file](QWidget* files) {
      auto* name = files->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
      QTest::keyClick(name, Qt::Key_A, Qt::ControlModifier);
      QTest::keyClicks(name, QDir::toNativeSeparators(QFileInfo(file).absoluteFilePath()));
      QTest::keyClick(name, Qt::Key_Return);
    });
    hands.takePicture(pictures);
    hands.press(QStringLiteral("confirm"));
    if (dialog->isVisible()) {
      hands.complain(QStringLiteral("%1 could not be done").arg(pictures));
      dialog->reject();
    }
  });
  menuEntry->trigger();
  hands.setDialog(before);
}

}  // namespace korvex2
