#include "DestinationEdit.h"

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>

namespace corvane::desktop {

namespace {

namespace fs = std::filesystem;

constexpr const char* kFolderKey = "Export/Folder";

QString ToText(const fs::path& path) {
    return QFile::decodeName(path.c_str());
}

} // namespace

DestinationEdit::DestinationEdit(const ExportPlace& place, QWidget* parent) : QWidget(parent), mPlace(place) {
    mPath = new QLineEdit(this);
    mPath->setObjectName(QStringLiteral("exportPath"));
    mPath->setAccessibleName(tr("Destination"));
    mPath->setToolTip(tr("The file to make; in names of pictures %05d stands for the frame's number"));
    auto* const browse = new QPushButton(tr("&Browse…"), this);
    browse->setObjectName(QStringLiteral("exportBrowse"));
    browse->setToolTip(tr("Choose the folder and name of the file"));
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, &DestinationEdit::Browse);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(mPath, 1);
    row->addWidget(browse);
    setFocusProxy(mPath);
}

void DestinationEdit::Propose(const QString& clipName, const ExportChoice& choice) {
    mChoice = &choice;
    QString folder = mPlace.folder;
    if (folder.isEmpty()) folder = QSettings().value(kFolderKey).toString();
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) folder = QDir::homePath();
    const std::string name = ProposedFileName(clipName.toStdString(), choice);
    mPath->setText(QDir(folder).absoluteFilePath(QString::fromStdString(name)));
}

void DestinationEdit::SetChoice(const ExportChoice& choice) {
    const QString before = QString::fromStdString(EndingOf(*mChoice));
    mChoice = &choice;
    QString path = mPath->text();
    if (!path.endsWith(before, Qt::CaseInsensitive)) return;
    path.chop(before.size());
    mPath->setText(path + QString::fromStdString(EndingOf(choice)));
}

void DestinationEdit::Browse() {
    QFileDialog dialog(this, tr("Export To"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite); // the range decides which files there will be
    const QString suffix = QString::fromLatin1(mChoice->kind);
    dialog.setNameFilters(
        {QStringLiteral("%1 (*.%2)").arg(QString::fromUtf8(mChoice->label), suffix), tr("All files (*)")});
    dialog.setDefaultSuffix(suffix);
    const QFileInfo present(mPath->text());
    dialog.setDirectory(present.absolutePath());
    dialog.selectFile(present.fileName());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    mPath->setText(QFileInfo(dialog.selectedFiles().constFirst()).absoluteFilePath());
    mPath->setFocus();
}

std::optional<fs::path> DestinationEdit::Confirm(std::pair<std::int64_t, std::int64_t> frames,
                                                 QString& complaint) {
    const auto path = Entered(complaint);
    if (path) complaint = WhyNot(*path);
    if (!complaint.isEmpty() || !ConfirmsReplacement(*path, frames)) {
        mPath->setFocus();
        return std::nullopt;
    }
    QSettings().setValue(kFolderKey, ToText(path->parent_path()));
    return path;
}

std::optional<fs::path> DestinationEdit::Entered(QString& complaint) const {
    const QString text = mPath->text().trimmed();
    const QFileInfo info(QDir(mPlace.folder.isEmpty() ? QDir::homePath() : mPlace.folder), text);
    if (text.isEmpty() || text.endsWith(u'/') || info.isDir()) {
        complaint = tr("Name the file to make.");
        return std::nullopt;
    }
    try {
        const QString path = QDir::cleanPath(info.absoluteFilePath());
        return CompletedPath(QFile::encodeName(path).toStdString(), *mChoice);
    } catch (const Failure& failure) {
        complaint = tr("%1.").arg(QString::fromStdString(failure.what()));
        return std::nullopt;
    }
}

QString DestinationEdit::WhyNot(const fs::path& path) const {
    const QString folder = ToText(path.parent_path());
    if (!QFileInfo(folder).isDir())
        return tr("There is no folder %1; make it first, or choose another.").arg(folder);
    if (::access(path.parent_path().c_str(), W_OK | X_OK) != 0)
        return tr("The folder %1 can't be written to; choose another.").arg(folder);
    if (mPlace.isTaken && mPlace.isTaken(path))
        return tr("Another export is going to make %1; choose another name.").arg(ToText(path));
    return {};
}

bool DestinationEdit::ConfirmsReplacement(const fs::path& path,
                                          std::pair<std::int64_t, std::int64_t> frames) {
    const auto replaced = FindReplaced(path, *mChoice, frames);
    if (!replaced) return true;
    const QString question =
        mChoice->naming == ExportNaming::kPictures
            ? tr("%1 already exists.\nDo you want to replace it and the pictures after it?")
            : tr("%1 already exists.\nDo you want to replace it?");
    QMessageBox box(QMessageBox::Warning, window()->windowTitle(), question.arg(ToText(*replaced)),
                    QMessageBox::Yes | QMessageBox::No, this);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

} // namespace corvane::desktop
