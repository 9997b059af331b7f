// See bodyfiledialog.h.
#include "bodyfiledialog.h"

#include <algorithm>
#include <utility>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>
#include <QTextDocument>

namespace korvex2 {

namespace {

const char* const folderKey = "bodyFiles/folder";

QSettings settings() { return QSettings(QStringLiteral("korvex2"), QStringLiteral("frontend")); }

/// The folder last used, or a sensible one when it is gone.
QString firstFolder() {
  const QString last = settings().value(QLatin1String(folderKey)).toString();
  if (!last.isEmpty() && QFileInfo(last).isDir()) {
    return last;
  }
  const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

/// A file name of nothing but letters, digits and underscores: "Quadrotor, five degrees" is quadrotor_five_degrees.
QString fileNameFor(const BodySummary& body) {
  QString name = body.description.toLower();
  for (QChar& c : name) {
    c = c.isLetterOrNumber() ? c : QLatin1Char(' ');
  }
  name = name.simplified().replace(QLatin1Char(' '), QLatin1Char('_'));
  return name.isEmpty() ? QStringLiteral("%1_%2").arg(body.type).arg(body.number, 2, 10, QLatin1Char('0')) : name;
}

}  // namespace

BodyFileDialog::BodyFileDialog(std::vector<BodySummary> bodies, const std::optional<BodyId>& selected, QWidget* parent)
    : QDialog(parent),
      bodies_(std::move(bodies)),
      body_(new QComboBox(this)),
      fileName_(new QLineEdit(this)),
      summary_(new QLabel(this)),
      confirm_(new QPushButton(this)) {
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  body_->setObjectName(QStringLiteral("body"));
  body_->setPlaceholderText(tr("Choose a body"));
  for (const BodySummary& body : bodies_) {
    body_->addItem(body.title());
  }
  const auto chosen =
      std::find_if(bodies_.cbegin(), bodies_.cend(), [&selected](const BodySummary& b) { return selected == b.id(); });
  body_->setCurrentIndex(chosen == bodies_.cend() ? -1 : static_cast<int>(chosen - bodies_.cbegin()));
  fileName_->setObjectName(QStringLiteral("file"));
  fileName_->setReadOnly(true);
  fileName_->setMinimumWidth(fileName_->fontMetrics().averageCharWidth() * 48);
  auto* choose = new QPushButton(tr("Ch&oose..."), this);
  choose->setObjectName(QStringLiteral("choose"));
  summary_->setObjectName(QStringLiteral("summary"));
  summary_->setTextFormat(Qt::PlainText);
  summary_->setWordWrap(true);
  summary_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  summary_->setMinimumHeight(summary_->fontMetrics().lineSpacing() * 5);  // so that the dialog keeps its size
  confirm_->setObjectName(QStringLiteral("confirm"));
  confirm_->setDefault(true);

  auto* bodyLabel = new QLabel(tr("&Body:"), this);
  bodyLabel->setBuddy(body_);
  auto* fileLabel = new QLabel(tr("&File:"), this);
  fileLabel->setBuddy(choose);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
  buttons->addButton(confirm_, QDialogButtonBox::AcceptRole);
  auto* layout = new QGridLayout(this);
  layout->addWidget(bodyLabel, 0, 0);
  layout->addWidget(body_, 0, 1, 1, 2);
  layout->addWidget(fileLabel, 1, 0);
  layout->addWidget(fileName_, 1, 1);
  layout->addWidget(choose, 1, 2);
  layout->addWidget(summary_, 2, 0, 1, 3);
  layout->addWidget(buttons, 3, 0, 1, 3);
  layout->setRowStretch(2, 1);

  connect(body_, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] { summarize(); });
  connect(choose, &QPushButton::clicked, this, &BodyFileDialog::chooseFile);
  connect(buttons, &QDialogButtonBox::accepted, this, &BodyFileDialog::confirm);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void BodyFileDialog::setTexts(const QString& title, const QString& confirm) {
  setWindowTitle(title);
  confirm_->setText(confirm);
}

const BodySummary* BodyFileDialog::body() const {
  const int index = body_->currentIndex();
  return index < 0 ? nullptr : &bodies_[static_cast<std::size_t>(index)];
}

void BodyFileDialog::showSummary(const QString& text, bool canConfirm) {
  summary_->setText(text);
  confirm_->setEnabled(canConfirm);
}

void BodyFileDialog::showFailure(const QString& title, const QString& text, QWidget* parent) {
  QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, parent);
  box.setTextFormat(Qt::PlainText);
  box.exec();
}

void BodyFileDialog::fail(const QString& text) {
  emit failed(text);
  showFailure(windowTitle(), text, this);
}

void BodyFileDialog::chooseFile() {
  QFileDialog dialog(this, windowTitle(), firstFolder(), tr("Body files (*.body);;All files (*)"));
  dialog.setObjectName(QStringLiteral("fileDialog"));
  dialog.setOption(QFileDialog::DontUseNativeDialog);  // the same on every desktop, and with the host's shortcuts
  prepare(dialog);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
    return;
  }
  file_ = dialog.selectedFiles().constFirst();
  settings().setValue(QLatin1String(folderKey), QFileInfo(file_).absolutePath());
  const QString shown = QDir::toNativeSeparators(file_);
  fileName_->setText(shown);
  fileName_->setToolTip(Qt::convertFromPlainText(shown));
  takeFile();
  summarize();
}

void BodyFileDialog::confirm() {
  if (carryOut()) {
    accept();
  }
}

BodyImportDialog::BodyImportDialog(BodyFileStore& store, std::vector<BodySummary> bodies,
                                   const std::optional<BodyId>& selected, QWidget* parent)
    : BodyFileDialog(std::move(bodies), selected, parent), store_(store) {
  setTexts(title(), tr("&Import"));
  BodyImportDialog::summarize();
}

QString BodyImportDialog::title() { return tr("Import body file"); }

QString BodyImportDialog::failureText(const QString& problem) { return tr("Body file not imported: %1").arg(problem); }

QString BodyImportDialog::unknownText(const QString& problem) const {
  return tr("The answer to the import was lost (%1): %2 may have taken the file or not. The list of bodies shows how "
            "many markers it has now; the file can be imported again.")
      .arg(problem, body()->title());
}

void BodyImportDialog::prepare(QFileDialog& dialog) const {
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::ExistingFile);
}

void BodyImportDialog::takeFile() {
  content_ = store_.summaryOf(file());
  if (!content_.problem.isEmpty()) {
    summarize();  // the box must not stand before the summary of another file
    fail(failureText(content_.problem));
  }
}

void BodyImportDialog::summarize() {
  if (!content_.problem.isEmpty()) {
    showSummary(failureText(content_.problem), false);
    return;
  }
  if (body() == nullptr || file().isEmpty()) {
    showSummary(tr("Choose a body and the file that it takes its markers from."), false);
    return;
  }
  QString text = tr("%1\nMarkers: %2 now, %3 after the import. Lines in the file: %4.\n"
                    "The coordinate system becomes that of the file; emissions are cleared.")
                     .arg(body()->title(), QString::number(body()->markers), QString::number(content_.markers),
                          QString::number(content_.lines));
  if (!body()->calibrated) {
    text += tr("\nThe body becomes calibrated.");
  }
  showSummary(text, true);
}

bool BodyImportDialog::carryOut() {
  const ImportOutcome outcome = store_.importBody(body()->id(), file());
  if (!outcome.problem.isEmpty()) {
    fail(outcome.mayHaveTaken ? unknownText(outcome.problem) : failureText(outcome.problem));
    return false;
  }
  emit succeeded(tr("Imported into %1: %2").arg(body()->title(), QDir::toNativeSeparators(file())));
  return true;
}

BodyExportDialog::BodyExportDialog(const BodyFileStore& store, std::vector<BodySummary> bodies,
                                   const std::optional<BodyId>& selected, QWidget* parent)
    : BodyFileDialog(std::move(bodies), selected, parent), store_(store) {
  setTexts(tr("Export body file"), tr("&Export"));
  BodyExportDialog::summarize();
}

void BodyExportDialog::prepare(QFileDialog& dialog) const {
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.setDefaultSuffix(QStringLiteral("body"));
  if (body() != nullptr) {
    dialog.selectFile(fileNameFor(*body()) + QStringLiteral(".body"));
  }
}

void BodyExportDialog::summarize() {
  if (body() != nullptr && body()->markers == 0) {
    showSummary(tr("%1\nThe body has no markers to export.").arg(body()->title()), false);
    return;
  }
  if (body() == nullptr || file().isEmpty()) {
    showSummary(tr("Choose a body and the file that its markers are written to."), false);
    return;
  }
  QString text = tr("%1\nMarkers: %2, in the body's present coordinate system.")
                     .arg(body()->title(), QString::number(body()->markers));
  if (QFileInfo::exists(file())) {
    text += tr("\nThe file exists and is replaced.");
  }
  showSummary(text, true);
}

bool BodyExportDialog::carryOut() {
  const QString problem = store_.exportBody(body()->id(), file());
  if (!problem.isEmpty()) {
    fail(tr("Body not exported: %1").arg(problem));
    return false;
  }
  emit succeeded(tr("Exported from %1: %2").arg(body()->title(), QDir::toNativeSeparators(file())));
  return true;
}

}  // namespace korvex2
