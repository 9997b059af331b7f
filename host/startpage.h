// What the main window shows when no dialog is open: backend, modules and bodies at a glance.
#ifndef KORVEX2_HOST_STARTPAGE_H
#define KORVEX2_HOST_STARTPAGE_H

#include <optional>
#include <vector>

#include <QList>
#include <QWidget>

#include "bodylisting.h"
#include "moduleset.h"

class QAction;
class QLabel;
class QTreeWidget;
class QVBoxLayout;

namespace korvex2 {

/// Object names: "connection" and "connectionDetails" (labels), "modules" (tree: module, version; a refused file has
/// the reason in place of the version), "bodies" (tree: body, markers, state), "noBodies" (label), "actions" (holds
/// one button a menu entry of the modules).
class StartPage : public QWidget {
  Q_OBJECT

 public:
  explicit StartPage(QWidget* parent = nullptr);

  /// @param description  which backend; @param details  its version and data, one fact a line, plain text
  void setConnection(const QString& description, const QStringList& details);
  void setModules(const std::vector<ModuleRecord>& records, const std::vector<ModuleFolder>& searched);
  /// The body that is selected stays so, wherever it is in the new list.
  void setBodies(const std::vector<BodySummary>& bodies);
  /// While the backend is out of reach, what is known of it stands back.
  void setReachable(bool reachable);
  std::optional<BodyId> selectedBody() const;
  /// A button for every action, with its shortcut beside it. Buttons of actions that are destroyed go with them.
  void setActions(const QList<QAction*>& actions);

 private:
  QLabel* connection_;
  QLabel* connectionDetails_;
  QTreeWidget* modules_;
  QLabel* noModules_;
  QTreeWidget* bodies_;
  QLabel* noBodies_;
  QWidget* actionsBox_;
  QVBoxLayout* actionsLayout_;
};

}  // namespace korvex2

#endif
