#include "ui/window/main/given_files.h"

#include <QFile>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/dialogs/guard.h"
#include "platform/printing/picture_import.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr const char* kProcedure = "frmMain - FilesDropped";

bool IsLetter(const std::filesystem::path& file) {
  const std::string extension = ToLower(file.extension().string());
  return extension == ".rtf" || extension == ".txt";
}

bool IsPicture(const std::filesystem::path& file) {
  try {
    printing::ImportPictureFile(file);
    return true;
  } catch (const RuntimeError&) {
    return false;
  }
}

const char* ReasonToLeave(const std::filesystem::path& file) {
  std::error_code unknown;
  if (std::filesystem::is_directory(file, unknown)) return "it is a folder";
  if (!std::filesystem::is_regular_file(file, unknown)) return "there is no such file";
  if (IsPicture(file)) return "a picture needs an open letter to stand in";
  return "it is not a letter, a document or a picture of a kind that Tenora reads";
}

}  // namespace

void GivenFiles::Take(const QStringList& files) {
  QStringList known, perhaps_pictures;
  for (const QString& name : files) {
    const std::filesystem::path file(QFile::encodeName(name).toStdString());
    std::error_code unknown;
    const bool other = IsLetter(file) || ImportTemplates::IsDocument(file) ||
                       !std::filesystem::is_regular_file(file, unknown);
    (other ? known : perhaps_pictures).append(name);
  }
  // First, into the letter that is in front now. It gives back what is no picture.
  LetterWindow* const front = letters_.Active();
  if (front != nullptr && !perhaps_pictures.isEmpty()) {
    front->ShowPreview(false);
    front->editor().InsertFiles(perhaps_pictures);
    front->ShowLetter();
  } else {
    known += perhaps_pictures;
  }
  if (!known.isEmpty()) TakeAllButPictures(known);
}

void GivenFiles::TakeAllButPictures(const QStringList& files) {
  Dialogs& dialogs = session_.platform.dialogs;
  std::string left;
  for (const QString& name : files) {
    const std::filesystem::path file(QFile::encodeName(name).toStdString());
    std::error_code unknown;
    const bool is_file = std::filesystem::is_regular_file(file, unknown);
    if (is_file && IsLetter(file)) {
      Guarded(dialogs, kProcedure, [&] { letters_.OpenFile(file); });
    } else if (is_file && ImportTemplates::IsDocument(file)) {
      Guarded(dialogs, kProcedure, [&] { imports_.Import(file); });
    } else {
      left += "\r\n" + file.filename().string() + ": " + ReasonToLeave(file) + ".";
    }
  }
  if (left.empty()) return;
  dialogs.Show({.text = "Nothing was done with\r\n" + left, .icon = Icon::kInformation});
}

}  // namespace tenora
