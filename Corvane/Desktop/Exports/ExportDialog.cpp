#include "ExportDialog.h"

#include <algorithm>
#include <limits>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QStandardItemModel>
#include <QVBoxLayout>

#include "DestinationEdit.h"
#include "Engine/ClipText.h"

namespace corvane::desktop {

namespace {

constexpr const char* kKindKey = "Export/Kind";
constexpr const char* kQualityKey = "Export/H264Quality";
constexpr const char* kPresetKey = "Export/H264Preset";

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
        ExportOptions options = OptionsFor(choice);
        ExportPreview preview = PreviewExport(clip, options);
        mKinds.push_back({&choice, std::move(options), std::move(preview)});
    }
}

void ExportDialog::MakeWidgets() {
    mForm = new QFormLayout;
    MakeKindRows(*mForm);
    MakeH264Rows(*mForm);
    MakeFrameRows(*mForm);
    mDestination = new DestinationEdit(mPlace, this);
    mForm->addRow(tr("&Destination:"), mDestination);
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
    mQuality->setToolTip(tr("Constant rate factor: lower is better and larger; at %1 no loss is seen")
                             .arg(H264Settings().quality));
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
    mDestination->Propose(mName, *mKinds[static_cast<std::size_t>(index)].choice);
    mKindBox->setCurrentIndex(index);
    ChooseKind(index);
}

void ExportDialog::Remember() const {
    QSettings settings;
    settings.setValue(kKindKey, QString::fromLatin1(Chosen().choice->id));
    settings.setValue(kQualityKey, mQuality->value());
    settings.setValue(kPresetKey, mPreset->currentText());
}

const ExportDialog::Kind& ExportDialog::Chosen() const {
    return mKinds[static_cast<std::size_t>(mKind)];
}

void ExportDialog::ChooseKind(int index) {
    mKind = index;
    mDestination->SetChoice(*Chosen().choice);
    QString about = QString::fromUtf8(Chosen().choice->about);
    if (Chosen().preview.losesAlpha) about += tr(" The clip's alpha is dropped: colors stay as they are.");
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
    mCount->setText(QString::fromStdString(FramesText(count)));
}

std::pair<std::int64_t, std::int64_t> ExportDialog::Frames() const {
    const std::int64_t first = mFirst->value();
    if (Chosen().choice->naming == ExportNaming::kPicture) return {first, first};
    if (mWhole->isChecked()) return {0, mFrameCount - 1};
    return {first, mLast->value()};
}

void ExportDialog::accept() {
    mComplaint->hide();
    QString complaint;
    const auto path = mDestination->Confirm(Frames(), complaint);
    if (!complaint.isEmpty()) {
        mComplaint->setText(complaint);
        mComplaint->show();
        FitHeight();
    }
    if (!path) return;
    mOptions = Chosen().options;
    if (Chosen().choice->IsH264())
        SetH264(mOptions, {mQuality->value(), mPreset->currentText().toStdString()});
    mOptions.output = *path;
    const bool whole = mWhole->isChecked() && Chosen().choice->naming != ExportNaming::kPicture;
    if (!whole) mOptions.frames = Frames();
    Remember();
    QDialog::accept();
}

} // namespace corvane::desktop
