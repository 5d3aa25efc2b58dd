#pragma once

#include <optional>

#include <QFileDialog>

#include "Services/UI/UIPlatform.h"

namespace corvane::desktop {

/// The system's dialog that asks where to save a file. A name without an extension gets the filter's, and a
/// file that would be replaced under that name is asked for as any other.
class SaveFileDialog {
  public:
    SaveFileDialog(const SaveFileRequest& request, const QString& folder, QWidget* parent);

    /// The whole path that the person confirmed; nothing where the dialog was cancelled.
    std::optional<QString> Run();

  private:
    bool ConfirmsReplacement(const QString& path);

    const SaveFileRequest& mRequest;
    QFileDialog mDialog;
};

} // namespace corvane::desktop
