#pragma once

#include <optional>

#include <QFileDialog>

#include "Services/UI/UIPlatform.h"

namespace corvane::desktop {

/// The system's dialog that asks where to save a file. A name without an extension gets the filter's, and the
/// person is asked before a file of that name is replaced as before any other. UI thread.
class SaveFileDialog {
  public:
    /// Begins in `folder`. `request` outlives the dialog.
    SaveFileDialog(const SaveFileRequest& request, const QString& folder, QWidget* parent);

    /// Shows the dialog; returns the absolute path that the person confirmed, or nothing if it was cancelled.
    std::optional<QString> Run();

  private:
    bool ConfirmsReplacement(const QString& path);

    const SaveFileRequest& mRequest;
    QFileDialog mDialog;
};

} // namespace corvane::desktop
