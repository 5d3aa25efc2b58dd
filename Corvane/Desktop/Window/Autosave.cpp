#include "Autosave.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QUuid>

#include "Desktop/Toolkit/Text.h"
#include "Engine/Failure.h"
#include "Engine/ProjectFile.h"
#include "Engine/TextFile.h"

namespace corvane::desktop {

namespace {

namespace fs = std::filesystem;

constexpr char kSuffix[] = ".autosave";
constexpr char kPathKey[] = "path";
constexpr char kProjectKey[] = "project";

/// Changes that follow each other closely are written together.
constexpr std::chrono::milliseconds kDelay{400};

std::unique_ptr<QLockFile> LockOf(const fs::path& file) {
    auto lock = std::make_unique<QLockFile>(FromPath(fs::path(file).replace_extension(".lock")));
    // A lock ends with its process, not after some time.
    lock->setStaleLockTime(0);
    return lock;
}

/// What was left behind, as text: the project with whole paths, and its file.
std::string ToText(const Project& project, const fs::path& path) {
    const QJsonObject object{
        {QString::fromLatin1(kPathKey), QString::fromStdString(path.string())},
        {QString::fromLatin1(kProjectKey), QString::fromStdString(WriteProject(project, {}))}};
    return QJsonDocument(object).toJson().toStdString();
}

Autosave::Lost FromFile(const fs::path& file) {
    const QJsonObject object =
        QJsonDocument::fromJson(QByteArray::fromStdString(ReadTextFile(file))).object();
    const std::string text = object[QLatin1StringView(kProjectKey)].toString().toStdString();
    return {.project = ReadProject(text, file.string(), {}),
            .path = object[QLatin1StringView(kPathKey)].toString().toStdString(),
            .when = QFileInfo(FromPath(file)).lastModified()};
}

} // namespace

Autosave::Autosave(Document& document, fs::path folder, QObject* parent)
    : QObject(parent), mDocument(document), mFolder(std::move(folder)) {
    mWriter.setMaxThreadCount(1);
    mDelay.setSingleShot(true);
    mDelay.setInterval(kDelay);
    connect(&mDelay, &QTimer::timeout, this, &Autosave::Write);
    connect(&mDocument, &Document::Changed, &mDelay, qOverload<>(&QTimer::start));
    connect(&mDocument, &Document::Saved, this, &Autosave::Write);
}

Autosave::~Autosave() {
    mWriter.waitForDone();
}

fs::path Autosave::DefaultFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    return ToPath(folder) / "unsaved";
}

bool Autosave::Claim(const fs::path& file) {
    auto lock = LockOf(file);
    if (!lock->tryLock(0)) return false;
    mLock = std::move(lock);
    mFile = file;
    return true;
}

void Autosave::ClaimNew() {
    std::error_code error;
    fs::create_directories(mFolder, error);
    // What is not saved is nobody else's to read.
    fs::permissions(mFolder, fs::perms::owner_all, error);
    Claim(mFolder / (QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString() + kSuffix));
}

std::optional<Autosave::Lost> Autosave::TakeLost() {
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(mFolder, error))
        if (entry.path().extension() == kSuffix) files.push_back(entry.path());
    std::ranges::sort(files, std::greater(), [](const fs::path& file) {
        std::error_code ignored;
        return fs::last_write_time(file, ignored);
    });
    for (const fs::path& file : files) {
        if (!Claim(file)) continue; // its process lives
        try {
            return FromFile(file);
        } catch (const Failure&) {
            // It can't be read, now or later: a full disk cut it short, or a newer version wrote it.
            LeaveLost();
        }
    }
    return std::nullopt;
}

void Autosave::LeaveLost() {
    mLock.reset();
    mFile.clear();
}

void Autosave::Write() {
    mDelay.stop();
    if (!mDocument.IsModified()) return Discard();
    if (mFile.empty()) ClaimNew();
    {
        const std::lock_guard lock(mMutex);
        mNext = {.project = mDocument.GetProject(), .path = mDocument.GetPath(), .file = mFile};
    }
    mWriter.start([this] { WriteNext(); });
}

/// On the writer's thread.
void Autosave::WriteNext() {
    std::optional<Unsaved> next;
    {
        const std::lock_guard lock(mMutex);
        next.swap(mNext);
    }
    if (!next) return; // written already, in place of an earlier one
    QString failure;
    try {
        if (next->file.empty()) throw Failure(mFolder.string() + ": files can't be made in this folder.");
        // Nobody else has such a file.
        std::ignore = WriteTextFile(next->file, ToText(next->project, next->path), 0600);
    } catch (const Failure& why) {
        failure =
            tr("Changes are not kept until you save the project: %1").arg(QString::fromUtf8(why.what()));
    }
    mUI.Post([this, failure = std::move(failure)] { Note(failure); });
}

void Autosave::Note(const QString& failure) {
    if (!failure.isEmpty() && !mHasFailed) Q_EMIT Failed(failure);
    mHasFailed = !failure.isEmpty();
}

void Autosave::Flush() {
    Write();
    mWriter.waitForDone();
}

void Autosave::Discard() {
    mDelay.stop();
    mWriter.waitForDone();
    std::error_code error;
    if (!mFile.empty()) fs::remove(mFile, error);
    LeaveLost();
}

} // namespace corvane::desktop
