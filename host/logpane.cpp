// See logpane.h.
#include "logpane.h"

#include <algorithm>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "logmodel.h"

namespace korvex2 {

LogPane::LogPane(LogModel* model, const QString& emptyText, QWidget* parent)
    : QWidget(parent), model_(model), shown_(new QSortFilterProxyModel(this)), view_(new QTreeView(this)) {
  shown_->setSourceModel(model);
  shown_->setFilterKeyColumn(-1);
  shown_->setFilterCaseSensitivity(Qt::CaseInsensitive);

  view_->setObjectName(QStringLiteral("view"));
  view_->setModel(shown_);
  view_->setRootIsDecorated(false);
  view_->setUniformRowHeights(true);
  view_->setAlternatingRowColors(true);
  view_->setAllColumnsShowFocus(true);
  view_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  view_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
  view_->setFrameShape(QFrame::NoFrame);
  view_->header()->setStretchLastSection(true);

  auto* note = new QLabel(emptyText, view_->viewport());
  note->setAlignment(Qt::AlignCenter);
  note->setWordWrap(true);
  note->setEnabled(false);
  auto* overlay = new QVBoxLayout(view_->viewport());
  overlay->addWidget(note);
  emptyNote_ = note;

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(buildTools());
  layout->addWidget(view_, 1);

  // Whether the view follows is decided by where the operator left the scroll bar, before a new row moves it.
  connect(view_->verticalScrollBar(), &QScrollBar::actionTriggered, this, [this] {
    const QScrollBar* bar = view_->verticalScrollBar();
    following_ = bar->sliderPosition() >= bar->maximum();
  });
  connect(view_->verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] {
    if (following_) {
      view_->scrollToBottom();
    }
  });
  // Once for many rows: scrolling makes the view lay out all its rows.
  scroll_.setSingleShot(true);
  connect(&scroll_, &QTimer::timeout, this, [this] {
    if (following_) {
      view_->scrollToBottom();
    }
  });
  connect(shown_, &QAbstractItemModel::rowsInserted, this, [this] {
    scroll_.start(0);
    updateTools();
  });
  connect(shown_, &QAbstractItemModel::rowsRemoved, this, [this] { updateTools(); });
  connect(shown_, &QAbstractItemModel::modelReset, this, [this] {
    following_ = true;
    updateTools();
  });
  updateTools();
}

QWidget* LogPane::buildTools() {
  auto* tools = new QWidget(this);
  filter_ = new QLineEdit(tools);
  filter_->setObjectName(QStringLiteral("filter"));
  filter_->setPlaceholderText(tr("Filter"));
  filter_->setClearButtonEnabled(true);
  filter_->setMaximumWidth(filter_->fontMetrics().averageCharWidth() * 40);
  connect(filter_, &QLineEdit::textChanged, shown_, &QSortFilterProxyModel::setFilterFixedString);

  auto* copyAction = new QAction(tr("Copy"), this);
  copyAction->setShortcut(QKeySequence::Copy);
  copyAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  copyAction->setToolTip(tr("Copy the selected rows, or all rows when none is selected"));
  connect(copyAction, &QAction::triggered, this, &LogPane::copy);
  auto* clearAction = new QAction(tr("Clear"), this);
  clearAction->setToolTip(tr("Forget all rows"));
  connect(clearAction, &QAction::triggered, this, &LogPane::clear);
  view_->addActions({copyAction, clearAction});
  view_->setContextMenuPolicy(Qt::ActionsContextMenu);

  const auto button = [tools](QAction* action, const char* name) {
    auto* made = new QToolButton(tools);
    made->setObjectName(QLatin1String(name));
    made->setDefaultAction(action);
    made->setToolButtonStyle(Qt::ToolButtonTextOnly);
    made->setAutoRaise(true);
    return made;
  };
  copyButton_ = button(copyAction, "copyButton");
  clearButton_ = button(clearAction, "clearButton");

  auto* layout = new QHBoxLayout(tools);
  layout->setContentsMargins(4, 2, 4, 2);
  layout->addWidget(filter_, 1);
  layout->addStretch(0);
  layout->addWidget(copyButton_);
  layout->addWidget(clearButton_);
  return tools;
}

void LogPane::setColumnWidth(int column, int characters) {
  view_->setColumnWidth(column, view_->fontMetrics().averageCharWidth() * characters);
}

QString LogPane::text() const {
  std::vector<int> rows;
  const QModelIndexList selected = view_->selectionModel()->selectedRows();
  for (const QModelIndex& index : selected) {
    rows.push_back(index.row());
  }
  if (rows.empty()) {
    for (int row = 0; row < shown_->rowCount(); ++row) {
      rows.push_back(row);
    }
  }
  std::sort(rows.begin(), rows.end());
  QString all;
  for (const int row : rows) {
    all += model_->rowText(shown_->mapToSource(shown_->index(row, 0)).row()) + QLatin1Char('\n');
  }
  return all;
}

void LogPane::copy() {
  const QString all = text();
  if (!all.isEmpty()) {
    QGuiApplication::clipboard()->setText(all);
  }
}

void LogPane::clear() { model_->clear(); }

void LogPane::updateTools() {
  const bool empty = model_->rowCount() == 0;
  emptyNote_->setVisible(empty);
  copyButton_->defaultAction()->setEnabled(!empty);
  clearButton_->defaultAction()->setEnabled(!empty);
}

}  // namespace korvex2
