#include "SaveFileDialog.h"

#include <QFileInfo>
#include <QMessageBox>

#include "Text.h"

namespace corvane::desktop {

namespace {

/// A filter as Qt writes it, as in "Synthex Data (*.synthex)".
QString FilterText(const lumui::dialogs::FileDialogFilterInfo& filter) {
    return QStringLiteral("%1 (*.%2)").arg(ToQt(filter.mDescription), ToQt(filter.mExtension));
}

} // namespace

SaveFileDialog::SaveFileDialog(const SaveFileRequest& request, const QString& folder, QWidget* parent)
    : mRequest(request), mDialog(parent, QFileDialog::tr("Save As"), folder) {
    mDialog.setAcceptMode(QFileDialog::AcceptSave);
    mDialog.setFileMode(QFileDialog::AnyFile);
    QStringList filters;
    for (const auto& filter : request.filters) filters << FilterText(filter);
    mDialog.setNameFilters(filters);
    if (request.filterIndex < request.filters.size()) {
        const auto& filter = request.filters[request.filterIndex];
        mDialog.selectNameFilter(FilterText(filter));
        mDialog.setDefaultSuffix(ToQt(filter.mDefaultExtension));
    }
    mDialog.setOption(QFileDialog::DontConfirmOverwrite, !request.confirmReplace);
    mDialog.selectFile(ToQt(WithDefaultExtension(request.defaultName, request)));
}

std::optional<QString> SaveFileDialog::Run() {
    while (mDialog.exec() == QDialog::Accepted && !mDialog.selectedFiles().isEmpty()) {
        const QString chosen = QFileInfo(mDialog.selectedFiles().constFirst()).absoluteFilePath();
        // Some systems' dialogs don't add the extension, and so did not see the file that is there.
        const QString path = ToQt(WithDefaultExtension(FromQt(chosen), mRequest));
        if (path == chosen || !mRequest.confirmReplace || !QFileInfo::exists(path) ||
            ConfirmsReplacement(path))
            return path;
    }
    return std::nullopt;
}

bool SaveFileDialog::ConfirmsReplacement(const QString& path) {
    const QString question = QFileDialog::tr("%1 already exists.\nDo you want to replace it?").arg(path);
    return QMessageBox::warning(mDialog.parentWidget(), mDialog.windowTitle(), question,
                                QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

} // namespace corvane::desktop
