// See startpage.h.
#include "startpage.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "menuplan.h"

namespace korvex2 {

namespace {

/// Where a row of the bodies keeps which body it is.
constexpr int typeRole = Qt::UserRole;
constexpr int numberRole = Qt::UserRole + 1;

/// For what is said by the way. The palette's own role for it is empty with some styles and paints nothing then.
QColor paleText() {
  QColor pale = QGuiApplication::palette().color(QPalette::Text);
  pale.setAlphaF(0.55);
  return pale;
}

QLabel* heading(const QString& text, double scale, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  QFont font = label->font();
  font.setPointSizeF(font.pointSizeF() * scale);
  font.setBold(scale < 1.5);
  label->setFont(font);
  return label;
}

QLabel* note(QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  QPalette palette = label->palette();
  palette.setColor(QPalette::WindowText, paleText());
  label->setPalette(palette);
  return label;
}

/// A framed part of the page with a heading; returns the layout its content goes into.
QVBoxLayout* addCard(const QString& title, QGridLayout* page, int row, int column, int rows) {
  auto* card = new QFrame;
  card->setObjectName(QStringLiteral("card"));
  auto* layout = new QVBoxLayout(card);
  layout->setContentsMargins(16, 12, 16, 14);
  layout->setSpacing(6);
  layout->addWidget(heading(title, 1.1, card));
  page->addWidget(card, row, column, rows, 1);
  return layout;
}

QTreeWidget* table(const QStringList& columns, const char* name) {
  auto* tree = new QTreeWidget;
  tree->setObjectName(QLatin1String(name));
  tree->setHeaderLabels(columns);
  tree->setRootIsDecorated(false);
  tree->setUniformRowHeights(true);
  tree->setAlternatingRowColors(true);
  tree->setFrameShape(QFrame::NoFrame);
  tree->setSelectionMode(QAbstractItemView::SingleSelection);
  tree->header()->setStretchLastSection(false);
  tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  return tree;
}

/// Shows a row less prominently, but still well readable.
void standBack(QTreeWidgetItem* item) {
  const QColor pale = paleText();
  for (int column = 0; column < item->columnCount(); ++column) {
    item->setForeground(column, pale);
  }
}

/// Makes a table as high as its rows need, up to `mostRows` of them.
void fitHeight(QTreeWidget* tree, int mostRows) {
  const int row = qMax(tree->sizeHintForRow(0), tree->fontMetrics().height() + 2);
  const int rows = qBound(1, tree->topLevelItemCount(), mostRows);
  tree->setFixedHeight(tree->header()->sizeHint().height() + rows * row + 2 * tree->frameWidth() + 2);
}

}  // namespace

StartPage::StartPage(QWidget* parent) : QWidget(parent) {
  setBackgroundRole(QPalette::Window);
  setStyleSheet(
      QStringLiteral("QFrame#card { background: palette(base); border: 1px solid palette(midlight);"
                     " border-radius: 6px; }"));

  auto* page = new QGridLayout(this);
  page->setContentsMargins(24, 18, 24, 18);
  page->setSpacing(14);
  page->addWidget(heading(tr("Korvex2 front end"), 1.7, this), 0, 0, 1, 2);

  QVBoxLayout* backend = addCard(tr("Backend"), page, 1, 0, 1);
  connection_ = new QLabel(this);
  connection_->setObjectName(QStringLiteral("connection"));
  connection_->setTextFormat(Qt::PlainText);
  connection_->setWordWrap(true);
  connectionDetails_ = note(this);
  connectionDetails_->setObjectName(QStringLiteral("connectionDetails"));
  connectionDetails_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  backend->addWidget(connection_);
  backend->addWidget(connectionDetails_);

  QVBoxLayout* modules = addCard(tr("Modules"), page, 2, 0, 1);
  modules_ = table({tr("Module"), tr("Version")}, "modules");
  noModules_ = note(this);
  noModules_->setObjectName(QStringLiteral("noModules"));
  actionsBox_ = new QWidget(this);
  actionsBox_->setObjectName(QStringLiteral("actions"));
  actionsLayout_ = new QVBoxLayout(actionsBox_);
  actionsLayout_->setContentsMargins(0, 0, 0, 6);
  modules->addWidget(noModules_);
  modules->addWidget(actionsBox_);
  modules->addWidget(modules_);
  modules->addStretch(1);

  QVBoxLayout* bodies = addCard(tr("Bodies of the backend"), page, 1, 1, 2);
  bodies_ = table({tr("Body"), tr("Markers"), tr("State")}, "bodies");
  noBodies_ = note(this);
  noBodies_->setObjectName(QStringLiteral("noBodies"));
  bodies->addWidget(noBodies_);
  bodies->addWidget(bodies_, 1);
  bodies->addStretch(0);

  setReachable(true);
  bodies_->setMinimumHeight(bodies_->fontMetrics().height() * 7);
  bodies_->headerItem()->setTextAlignment(1, Qt::AlignCenter);
  page->setColumnStretch(0, 2);
  page->setColumnStretch(1, 3);
  page->setRowStretch(2, 1);
  setConnection(tr("Not connected"), {});
  setModules({}, {});
  setBodies({});
  setActions({});
}

void StartPage::setConnection(const QString& description, const QStringList& details) {
  connection_->setText(description);
  connectionDetails_->setText(details.join(QLatin1Char('\n')));
  connectionDetails_->setVisible(!details.isEmpty());
}

void StartPage::setModules(const std::vector<ModuleRecord>& records, const std::vector<ModuleFolder>& searched) {
  modules_->clear();
  for (const ModuleRecord& record : records) {
    if (record.state == ModuleRecord::State::skipped) {
      continue;
    }
    const bool loaded = record.state == ModuleRecord::State::loaded;
    const QString name = loaded ? record.name : QFileInfo(record.file).fileName();
    auto* item = new QTreeWidgetItem(modules_, {name, loaded ? record.version : tr("refused")});
    const QString file = QDir::toNativeSeparators(record.file);
    const QString tip = (loaded ? file : tr("%1: %2").arg(file, record.reason)).toHtmlEscaped();
    item->setToolTip(0, tip);
    item->setToolTip(1, tip);
    if (!loaded) {
      standBack(item);
    }
  }
  QStringList folders;
  for (const ModuleFolder& folder : searched) {
    folders += QDir::toNativeSeparators(folder.path);
  }
  const bool none = modules_->topLevelItemCount() == 0;
  noModules_->setText(folders.isEmpty() ? tr("No modules are loaded.")
                                        : tr("No modules were found in:\n%1").arg(folders.join(QLatin1Char('\n'))));
  noModules_->setVisible(none);
  modules_->setVisible(!none);
  fitHeight(modules_, 8);
}

void StartPage::setBodies(const std::vector<BodySummary>& bodies) {
  const std::optional<BodyId> selected = selectedBody();
  bodies_->clear();
  for (const BodySummary& body : bodies) {
    const QString markers = body.calibrated ? QString::number(body.markers) : QString();
    const QString state = body.calibrated ? tr("calibrated") : tr("not calibrated");
    auto* item = new QTreeWidgetItem(bodies_, {body.title(), markers, state});
    item->setTextAlignment(1, Qt::AlignCenter);
    item->setData(0, typeRole, body.type);
    item->setData(0, numberRole, body.number);
    if (selected == body.id()) {
      bodies_->setCurrentItem(item);
    }
    if (!body.calibrated) {
      standBack(item);
    }
  }
  noBodies_->setVisible(bodies.empty());
  bodies_->setVisible(!bodies.empty());
}

void StartPage::setReachable(bool reachable) {
  bodies_->setEnabled(reachable);
  noBodies_->setText(reachable ? tr("The backend knows no bodies.") : tr("The bodies are shown when it is connected."));
}

std::optional<BodyId> StartPage::selectedBody() const {
  const QList<QTreeWidgetItem*> selected = bodies_->selectedItems();
  if (selected.isEmpty()) {
    return std::nullopt;
  }
  return BodyId{selected.constFirst()->data(0, typeRole).toString(),
                selected.constFirst()->data(0, numberRole).toInt()};
}

void StartPage::setActions(const QList<QAction*>& actions) {
  qDeleteAll(actionsBox_->findChildren<QPushButton*>());
  for (QAction* action : actions) {
    auto* button = new QPushButton(actionsBox_);
    const auto update = [button, action] {
      const QString shortcut = action->shortcut().toString(QKeySequence::NativeText);
      const QString text = plainTitle(action->text());
      button->setText(shortcut.isEmpty() ? text : QStringLiteral("%1   (%2)").arg(text, shortcut));
      button->setEnabled(action->isEnabled());
      button->setToolTip(action->statusTip());
    };
    update();
    connect(action, &QAction::changed, button, update);
    connect(button, &QPushButton::clicked, action, &QAction::trigger);
    connect(action, &QObject::destroyed, button, &QObject::deleteLater);
    actionsLayout_->addWidget(button);
  }
  actionsBox_->setVisible(!actions.isEmpty());
}

}  // namespace korvex2
