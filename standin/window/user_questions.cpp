#include "standin/window/user_questions.h"

#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <algorithm>
#include <system_error>
#include <vector>

#include "standin/app/failure.h"
#include "standin/app/package_file.h"
#include "standin/windows/code_page.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

// The plug-in tells folder and name apart as on Windows, so here the folder may be the path of a file.
fs::path proposedPath(const FileRequest& request, const fs::path& folder) {
  const fs::path asked = utf8FromWide(request.directory);
  const fs::path name = utf8FromWide(request.name);
  if (asked.empty()) return folder / name;
  std::error_code ignored;
  return fs::is_directory(asked, ignored) ? asked / name : asked;
}

void prepare(QFileDialog& dialog, FileQuestion question, const FileRequest& request, const fs::path& folder) {
  dialog.setObjectName("fileDialog");
  dialog.setWindowTitle(QString::fromStdWString(request.title));
  const QString filter = QString::fromStdWString(request.filter);
  dialog.setNameFilters({filter, "All files (*)"});
  const fs::path proposed = proposedPath(request, folder);
  std::error_code ignored;
  const bool isFolder = proposed.filename().empty() || fs::is_directory(proposed, ignored);
  dialog.setDirectory(QString::fromStdString((isFolder ? proposed : proposed.parent_path()).string()));
  if (!isFolder) dialog.selectFile(QString::fromStdString(proposed.filename().string()));
  if (question == FileQuestion::kOpen) {
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    return;
  }
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  if (filter.startsWith("*.")) dialog.setDefaultSuffix(filter.mid(2));
}

}  // namespace

FileAnswer askFile(FileQuestion question, const FileRequest& request, const fs::path& folder, QWidget* parent) {
  QFileDialog dialog(parent);
  prepare(dialog, question, request, folder);
  while (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
    const fs::path chosen = dialog.selectedFiles().front().toStdString();
    if (question == FileQuestion::kOpen) return chosen;
    try {
      PackageFile(chosen).checkPlace();
      return chosen;
    } catch (const Failure& failure) {
      tellFailure(failure.what(), "Choose another place.", parent);
    }
  }
  return std::nullopt;
}

std::optional<std::wstring> askRepresentation(const Model& model, QWidget* parent) {
  if (model.representations.empty()) return std::wstring();
  std::vector<std::wstring> answers;
  QStringList names;
  const auto add = [&](const std::wstring& answer, const QString& name) {
    answers.push_back(answer);
    names << name;
  };
  const auto isMaster = [](const SimplifiedRep& each) { return each.id == PRO_SIMPREP_MASTER_REP; };
  if (std::none_of(model.representations.begin(), model.representations.end(), isMaster)) add({}, "Master Rep");
  for (const SimplifiedRep& each : model.representations) add(each.name, QString::fromStdWString(each.name));
  QInputDialog dialog(parent);
  dialog.setObjectName("representation");
  dialog.setWindowTitle("Simplified representation");
  dialog.setLabelText("Send the model in this representation:");
  dialog.setOption(QInputDialog::UseListViewForComboBoxItems);
  dialog.setComboBoxItems(names);
  dialog.setTextValue(names.front());
  dialog.resize(dialog.minimumSizeHint());
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  const qsizetype at = names.indexOf(dialog.textValue());
  return at < 0 ? std::wstring() : answers[static_cast<std::size_t>(at)];
}

void tellFailure(const QString& message, const QString& remedy, QWidget* parent) {
  QMessageBox box(QMessageBox::Warning, "Creo stand-in", message, QMessageBox::Ok, parent);
  box.setObjectName("message");
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText(remedy);
  box.exec();
}

}  // namespace standin
