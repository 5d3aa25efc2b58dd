#include "ExportDialog.h"

#include <algorithm>
#include <limits>

#include <unistd.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QVBoxLayout>

namespace corvane::desktop {

namespace {

namespace fs = std::filesystem;

constexpr const char* kKindKey = "Export/Kind";
constexpr const char* kQualityKey = "Export/H264Quality";
constexpr const char* kPresetKey = "Export/H264Preset";
constexpr const char* kFolderKey = "Export/Folder";

fs::path ToPath(const QString& text) {
    return QFile::encodeName(text).toStdString();
}

QString ToText(const fs::path& path) {
    return QFile::decodeName(path.c_str());
}

/// What the proposed name for this choice ends with.
QString EndingOf(const ExportChoice& choice) {
    const QString number =
        choice.naming == ExportNaming::kPictures ? QStringLiteral(".%05d.") : QStringLiteral(".");
    return number + QString::fromLatin1(choice.format);
}

QSpinBox* MakeFrameBox(const char* objectName, std::int64_t frames, QWidget* parent) {
    auto* const box = new QSpinBox(parent);
    box->setObjectName(QString::fromLatin1(objectName));
    constexpr std::int64_t kMost = std::numeric_limits<int>::max();
    box->setRange(0, static_cast<int>(std::clamp<std::int64_t>(frames - 1, 0, kMost)));
    return box;
}

QLabel* MakeNote(const char* objectName, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(objectName));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

} // namespace

ExportDialog::ExportDialog(const Clip& clip, const QString& name, const ExportPlace& place, QWidget* parent)
    : QDialog(parent), mName(name), mPlace(place), mFrameCount(clip.Info().frames) {
    setWindowTitle(tr("Export %1").arg(name));
    FindKinds(clip);
    MakeWidgets();
    Restore();
}

void ExportDialog::FindKinds(const Clip& clip) {
    for (const ExportChoice& choice : ExportChoices()) {
        ExportOptions options = choice.OptionsFor(clip);
        ExportPreview preview = PreviewExport(clip, options);
        mKinds.push_back({&choice, std::move(options), std::move(preview)});
    }
}

void ExportDialog::MakeWidgets() {
    mForm = new QFormLayout;
    MakeKindRows(*mForm);
    MakeH264Rows(*mForm);
    MakeFrameRows(*mForm);
    MakeDestinationRows(*mForm);
    mComplaint = MakeNote("exportComplaint", this);
    QFont bold = mComplaint->font();
    bold.setBold(true);
    mComplaint->setFont(bold);
    mComplaint->hide();
    mButtons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    auto* const start = mButtons->addButton(tr("&Export"), QDialogButtonBox::AcceptRole);
    start->setObjectName(QStringLiteral("exportStart"));
    start->setToolTip(tr("Add this export to the queue"));
    start->setDefault(true);
    connect(mButtons, &QDialogButtonBox::accepted, this, &ExportDialog::accept);
    connect(mButtons, &QDialogButtonBox::rejected, this, &ExportDialog::reject);
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(mForm);
    layout->addWidget(mComplaint);
    layout->addStretch(1);
    layout->addWidget(mButtons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 80);
}

void ExportDialog::MakeKindRows(QFormLayout& form) {
    mKindBox = new QComboBox(this);
    mKindBox->setObjectName(QStringLiteral("exportKind"));
    mKindBox->setToolTip(tr("Container and codec; those that don't fit the clip can't be chosen"));
    mKindBox->setMaxVisibleItems(static_cast<int>(mKinds.size()));
    auto* const items = qobject_cast<QStandardItemModel*>(mKindBox->model());
    for (const Kind& kind : mKinds) {
        mKindBox->addItem(QString::fromUtf8(kind.choice->label));
        QStandardItem* const item = items->item(mKindBox->count() - 1);
        const bool fits = kind.preview.whyNot.empty();
        item->setEnabled(fits);
        item->setToolTip(fits ? QString::fromUtf8(kind.choice->about)
                              : QString::fromStdString(kind.preview.whyNot));
    }
    form.addRow(tr("&Format:"), mKindBox);
    mAbout = MakeNote("exportAbout", this);
    form.addRow(QString(), mAbout);
    // A tool tip needs a pointer, and a list of what can't be chosen is no stop of the keyboard.
    if (const QString unfit = UnfitText(); !unfit.isEmpty()) {
        QLabel* const why = MakeNote("exportUnfit", this);
        why->setText(unfit);
        form.addRow(QString(), why);
    }
    connect(mKindBox, &QComboBox::currentIndexChanged, this, &ExportDialog::ChooseKind);
}

QString ExportDialog::UnfitText() const {
    std::vector<std::pair<std::string, QStringList>> reasons;
    for (const Kind& kind : mKinds) {
        const std::string& reason = kind.preview.whyNot;
        if (reason.empty()) continue;
        auto found = std::ranges::find(reasons, reason, [](const auto& row) { return row.first; });
        if (found == reasons.end()) found = reasons.insert(found, {reason, {}});
        found->second << QString::fromUtf8(kind.choice->label);
    }
    if (reasons.size() == 1 && reasons.front().second.size() == static_cast<qsizetype>(mKinds.size()))
        return tr("This clip can't be exported: %1.").arg(QString::fromStdString(reasons.front().first));
    QStringList lines;
    for (const auto& [reason, labels] : reasons)
        lines << tr("Not for this clip: %1 – %2.")
                     .arg(labels.join(QStringLiteral("; ")), QString::fromStdString(reason));
    return lines.join(u'\n');
}

void ExportDialog::MakeH264Rows(QFormLayout& form) {
    mQuality = new QSpinBox(this);
    mQuality->setObjectName(QStringLiteral("exportQuality"));
    mQuality->setRange(kH264BestQuality, kH264WorstQuality);
    mQuality->setToolTip(tr("Constant rate factor: lower is better and larger; at 18 no loss is seen"));
    form.addRow(tr("&Quality (CRF):"), mQuality);
    mPreset = new QComboBox(this);
    mPreset->setObjectName(QStringLiteral("exportPreset"));
    mPreset->setToolTip(tr("Slower presets make smaller files of the same quality"));
    for (const char* const preset : H264Presets()) mPreset->addItem(QString::fromLatin1(preset));
    form.addRow(tr("&Preset:"), mPreset);
}

void ExportDialog::MakeFrameRows(QFormLayout& form) {
    mWhole = new QCheckBox(tr("&Whole clip"), this);
    mWhole->setObjectName(QStringLiteral("exportWhole"));
    mWhole->setToolTip(tr("Export every frame of the clip"));
    mWhole->setChecked(true);
    form.addRow(tr("Frames:"), mWhole);
    mFirst = MakeFrameBox("exportFirst", mFrameCount, this);
    mFirst->setToolTip(tr("The first frame to export, counted from 0"));
    mLast = MakeFrameBox("exportLast", mFrameCount, this);
    mLast->setToolTip(tr("The last frame to export; it is included"));
    mLast->setValue(mLast->maximum());
    mCount = new QLabel(this);
    mCount->setObjectName(QStringLiteral("exportCount"));
    form.addRow(tr("F&irst:"), mFirst);
    form.addRow(tr("&Last:"), mLast);
    form.addRow(QString(), mCount);
    connect(mWhole, &QCheckBox::toggled, this, &ExportDialog::ShowFrames);
    connect(mFirst, &QSpinBox::valueChanged, this, [this](int first) {
        mLast->setMinimum(first);
        ShowFrames();
    });
    connect(mLast, &QSpinBox::valueChanged, this, &ExportDialog::ShowFrames);
}

void ExportDialog::MakeDestinationRows(QFormLayout& form) {
    auto* const row = new QHBoxLayout;
    mPath = new QLineEdit(this);
    mPath->setObjectName(QStringLiteral("exportPath"));
    mPath->setAccessibleName(tr("Destination"));
    mPath->setToolTip(tr("The file to make; in names of pictures %05d stands for the frame's number"));
    auto* const browse = new QPushButton(tr("&Browse…"), this);
    browse->setObjectName(QStringLiteral("exportBrowse"));
    browse->setToolTip(tr("Choose the folder and name of the file"));
    browse->setAutoDefault(false);
    row->addWidget(mPath, 1);
    row->addWidget(browse);
    auto* const label = new QLabel(tr("&Destination:"), this);
    label->setBuddy(mPath);
    form.addRow(label, row);
    connect(browse, &QPushButton::clicked, this, &ExportDialog::Browse);
}

void ExportDialog::Restore() {
    const QSettings settings;
    mQuality->setValue(settings.value(kQualityKey, H264Settings().quality).toInt());
    const QString usual = QString::fromStdString(H264Settings().preset);
    mPreset->setCurrentText(usual);
    mPreset->setCurrentText(settings.value(kPresetKey, usual).toString());
    const auto fits = [](const Kind& kind) { return kind.preview.whyNot.empty(); };
    const std::string wanted = settings.value(kKindKey).toString().toStdString();
    auto kind =
        std::ranges::find_if(mKinds, [&](const Kind& row) { return row.choice->id == wanted && fits(row); });
    if (kind == mKinds.end()) kind = std::ranges::find_if(mKinds, fits);
    const bool any = kind != mKinds.end();
    mButtons->button(QDialogButtonBox::Cancel)->setDefault(!any);
    findChild<QPushButton*>(QStringLiteral("exportStart"))->setEnabled(any);
    const int index = any ? static_cast<int>(kind - mKinds.begin()) : 0;

    QString folder = mPlace.folder;
    if (folder.isEmpty()) folder = settings.value(kFolderKey).toString();
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) folder = QDir::homePath();
    const auto& choice = *mKinds[static_cast<std::size_t>(index)].choice;
    mPath->setText(
        QDir(folder).absoluteFilePath(QString::fromStdString(ProposedFileName(mName.toStdString(), choice))));
    mKindBox->setCurrentIndex(index);
    ChooseKind(index);
}

void ExportDialog::Remember() const {
    QSettings settings;
    settings.setValue(kKindKey, QString::fromLatin1(Chosen().choice->id));
    settings.setValue(kQualityKey, mQuality->value());
    settings.setValue(kPresetKey, mPreset->currentText());
    settings.setValue(kFolderKey, ToText(mOptions.output.parent_path()));
}

const ExportDialog::Kind& ExportDialog::Chosen() const {
    return mKinds[static_cast<std::size_t>(std::max(mKind, 0))];
}

void ExportDialog::ChooseKind(int index) {
    const int before = std::exchange(mKind, index);
    if (before >= 0 && before != index) {
        QString path = mPath->text();
        const QString ending = EndingOf(*mKinds[static_cast<std::size_t>(before)].choice);
        if (path.endsWith(ending, Qt::CaseInsensitive)) path.chop(ending.size());
        if (path.size() < mPath->text().size()) mPath->setText(path + EndingOf(*Chosen().choice));
    }
    QString about = QString::fromUtf8(Chosen().choice->about);
    if (Chosen().preview.dropsAlpha) about += tr(" The clip's alpha is dropped: colors stay as they are.");
    mAbout->setText(about);
    mForm->setRowVisible(mQuality, Chosen().choice->IsH264());
    mForm->setRowVisible(mPreset, Chosen().choice->IsH264());
    const bool picture = Chosen().choice->naming == ExportNaming::kPicture;
    if (mWhole->isChecked())
        mFirst->setValue(picture ? static_cast<int>(std::min<std::int64_t>(mPlace.frame, mFirst->maximum()))
                                 : 0);
    ShowFrames();
    FitHeight();
}

void ExportDialog::FitHeight() {
    // A window does not grow by itself with texts that wrap.
    layout()->activate();
    resize(width(), std::max(height(), layout()->totalHeightForWidth(width())));
}

void ExportDialog::ShowFrames() {
    const bool picture = Chosen().choice->naming == ExportNaming::kPicture;
    static_cast<QLabel*>(mForm->labelForField(mFirst))->setText(picture ? tr("F&rame:") : tr("F&irst:"));
    mForm->setRowVisible(mWhole, !picture);
    mForm->setRowVisible(mLast, !picture);
    mFirst->setEnabled(picture || !mWhole->isChecked());
    mLast->setEnabled(!mWhole->isChecked());
    const auto [first, last] = Frames();
    const std::int64_t count = last - first + 1;
    mCount->setText(count == 1 ? tr("1 frame") : tr("%1 frames").arg(QString::number(count)));
}

std::pair<std::int64_t, std::int64_t> ExportDialog::Frames() const {
    const std::int64_t first = mFirst->value();
    if (Chosen().choice->naming == ExportNaming::kPicture) return {first, first};
    if (mWhole->isChecked()) return {0, mFrameCount - 1};
    return {first, mLast->value()};
}

void ExportDialog::Browse() {
    QFileDialog dialog(this, tr("Export To"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite); // the range decides which files there will be
    const QString suffix = QString::fromLatin1(Chosen().choice->format);
    dialog.setNameFilters({QStringLiteral("%1 (*.%2)").arg(QString::fromUtf8(Chosen().choice->label), suffix),
                           tr("All files (*)")});
    dialog.setDefaultSuffix(suffix);
    const QFileInfo present(mPath->text());
    dialog.setDirectory(present.absolutePath());
    dialog.selectFile(present.fileName());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return;
    mPath->setText(QFileInfo(dialog.selectedFiles().constFirst()).absoluteFilePath());
    mPath->setFocus();
}

void ExportDialog::Complain(const QString& sentence, QWidget* where) {
    mComplaint->setText(sentence);
    mComplaint->show();
    FitHeight();
    where->setFocus();
}

std::optional<fs::path> ExportDialog::Destination() {
    const QString text = mPath->text().trimmed();
    const QFileInfo info(QDir(mPlace.folder.isEmpty() ? QDir::homePath() : mPlace.folder), text);
    if (text.isEmpty() || text.endsWith(u'/') || info.isDir()) {
        Complain(tr("Name the file to make."), mPath);
        return std::nullopt;
    }
    try {
        return CompletedPath(ToPath(QDir::cleanPath(info.absoluteFilePath())), *Chosen().choice);
    } catch (const Failure& failure) {
        Complain(tr("%1.").arg(QString::fromStdString(failure.what())), mPath);
        return std::nullopt;
    }
}

bool ExportDialog::CheckDestination(const fs::path& path) {
    const QString folder = ToText(path.parent_path());
    if (!QFileInfo(folder).isDir()) {
        Complain(tr("There is no folder %1; make it first, or choose another.").arg(folder), mPath);
        return false;
    }
    if (::access(path.parent_path().c_str(), W_OK | X_OK) != 0) {
        Complain(tr("The folder %1 can't be written to; choose another.").arg(folder), mPath);
        return false;
    }
    if (mPlace.isTaken && mPlace.isTaken(path)) {
        Complain(tr("Another export is going to make %1; choose another name.").arg(ToText(path)), mPath);
        return false;
    }
    return ConfirmsReplacement(path);
}

bool ExportDialog::ConfirmsReplacement(const fs::path& path) {
    const ExportChoice& choice = *Chosen().choice;
    const auto replaced = FindReplaced(path, choice, Frames());
    if (!replaced) return true;
    const QString question =
        choice.naming == ExportNaming::kPictures
            ? tr("%1 already exists.\nDo you want to replace it and the pictures after it?")
            : tr("%1 already exists.\nDo you want to replace it?");
    QMessageBox box(QMessageBox::Warning, windowTitle(), question.arg(ToText(*replaced)),
                    QMessageBox::Yes | QMessageBox::No, this);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::No);
    if (box.exec() == QMessageBox::Yes) return true;
    mPath->setFocus();
    return false;
}

void ExportDialog::accept() {
    mComplaint->hide();
    const auto path = Destination();
    if (!path || !CheckDestination(*path)) return;
    mOptions = Chosen().options;
    if (Chosen().choice->IsH264())
        ExportChoice::SetH264(mOptions, {mQuality->value(), mPreset->currentText().toStdString()});
    mOptions.output = *path;
    const bool whole = mWhole->isChecked() && Chosen().choice->naming != ExportNaming::kPicture;
    if (!whole) mOptions.frames = Frames();
    Remember();
    QDialog::accept();
}

} // namespace corvane::desktop
