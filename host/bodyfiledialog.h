// The dialogs in which the operator says which body goes into or comes out of which file.
#ifndef KORVEX2_HOST_BODYFILEDIALOG_H
#define KORVEX2_HOST_BODYFILEDIALOG_H

#include <optional>
#include <vector>

#include <QDialog>

#include "bodyfilestore.h"
#include "bodylisting.h"

class QComboBox;
class QFileDialog;
class QLabel;
class QLineEdit;
class QPushButton;

namespace korvex2 {

/// A body from a list, a file, what will happen, and a button that does it. The dialog closes when it is done; after a
/// failure it tells the reason in a box and stays open for another try.
///
/// Object names: "body" (combo box), "file" (line edit, read only), "choose" and "confirm" (buttons), "summary"
/// (label), "fileDialog" (the toolkit's own file dialog, opened by "choose"). The folder last used is kept in
/// QSettings("korvex2", "frontend").
class BodyFileDialog : public QDialog {
  Q_OBJECT

 public:
  /// Shows what failed in a box; plain text, because file names may hold anything.
  static void showFailure(const QString& title, const QString& text, QWidget* parent);

 signals:
  /// One line for the reports, before the box with the same text opens.
  void failed(const QString& text);
  /// One line for the reports.
  void succeeded(const QString& text);

 protected:
  /// @param selected  body that the list shows at first; none: the operator has to choose one
  BodyFileDialog(std::vector<BodySummary> bodies, const std::optional<BodyId>& selected, QWidget* parent);

  /// Title of the dialog and its boxes; text of the button "confirm".
  void setTexts(const QString& title, const QString& confirm);
  /// nullptr while no body is chosen.
  const BodySummary* body() const;
  const QString& file() const { return file_; }
  /// What will happen; a text and false when nothing can happen yet.
  void showSummary(const QString& text, bool canConfirm);
  void fail(const QString& text);

  virtual void prepare(QFileDialog& dialog) const = 0;
  /// A file was chosen.
  virtual void takeFile() {}
  /// Body or file are others now.
  virtual void summarize() = 0;
  /// Returns whether it was done.
  virtual bool carryOut() = 0;

 private:
  void chooseFile();
  void confirm();

  std::vector<BodySummary> bodies_;
  QString file_;
  QComboBox* body_;
  QLineEdit* fileName_;
  QLabel* summary_;
  QPushButton* confirm_;
};

/// "Import body file": the body takes over what the file holds.
class BodyImportDialog : public BodyFileDialog {
  Q_OBJECT

 public:
  BodyImportDialog(BodyFileStore& store, std::vector<BodySummary> bodies, const std::optional<BodyId>& selected,
                   QWidget* parent = nullptr);

  static QString title();
  static QString failureText(const QString& problem);

 protected:
  void prepare(QFileDialog& dialog) const override;
  void takeFile() override;
  void summarize() override;
  bool carryOut() override;

 private:
  QString unknownText(const QString& problem) const;

  BodyFileStore& store_;
  BodyFileSummary content_;
};

/// "Export body file": the file takes over what the body is now.
class BodyExportDialog : public BodyFileDialog {
  Q_OBJECT

 public:
  BodyExportDialog(const BodyFileStore& store, std::vector<BodySummary> bodies, const std::optional<BodyId>& selected,
                   QWidget* parent = nullptr);

 protected:
  void prepare(QFileDialog& dialog) const override;
  void summarize() override;
  bool carryOut() override;

 private:
  const BodyFileStore& store_;
};

}  // namespace korvex2

#endif
