// What the session asks of the user outside the plug-in's own dialogs, and what it tells him.
#pragma once

#include <QString>
#include <filesystem>
#include <optional>

#include "standin/cad/session.h"

class QWidget;

namespace standin {

enum class FileQuestion { kOpen, kSave };

// The native file dialog with the title, filter and folder of the request; `folder` when that names none. A file that
// cannot be written is told of and asked for again.
FileAnswer askFile(FileQuestion question, const FileRequest& request, const std::filesystem::path& folder,
                   QWidget* parent);

// The name of a simplified representation, empty for the master one; nothing for a cancel. A model without any is not
// asked about.
std::optional<std::wstring> askRepresentation(const Model& model, QWidget* parent);

// A message with an OK button; `remedy` says what can be done.
void tellFailure(const QString& message, const QString& remedy, QWidget* parent);

}  // namespace standin
