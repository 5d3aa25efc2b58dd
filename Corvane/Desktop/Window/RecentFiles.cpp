#include "RecentFiles.h"

#include <QFileInfo>
#include <QSettings>

namespace corvane::desktop {

namespace {

constexpr char kKey[] = "recentProjects";
constexpr int kMost = 10;

QStringList Stored() {
    return QSettings().value(QLatin1StringView(kKey)).toStringList();
}

} // namespace

RecentFiles::RecentFiles(QWidget* parent) : QMenu(tr("Open &Recent"), parent) {
    setToolTipsVisible(true);
    // Another window may have added some meanwhile.
    connect(this, &QMenu::aboutToShow, this, &RecentFiles::Fill);
    Fill();
}

void RecentFiles::Add(const std::filesystem::path& file) {
    const QString name = QString::fromStdString(file.string());
    QStringList files = Stored();
    files.removeAll(name);
    files.prepend(name);
    QSettings().setValue(QLatin1StringView(kKey), QStringList(files.mid(0, kMost)));
    Fill();
}

void RecentFiles::Fill() {
    clear();
    const QStringList files = Stored();
    for (const QString& file : files) {
        const int number = static_cast<int>(actions().size()) + 1;
        const QString name = QFileInfo(file).fileName().replace(u'&', QStringLiteral("&&"));
        QAction* const action = addAction(QStringLiteral("&%1 %2").arg(number % 10).arg(name));
        action->setToolTip(file);
        action->setEnabled(QFileInfo::exists(file));
        connect(action, &QAction::triggered, this, [this, file] { Q_EMIT Chosen(file); });
    }
    if (files.isEmpty()) {
        addAction(tr("No projects yet"))->setEnabled(false);
        return;
    }
    addSeparator();
    connect(addAction(tr("&Clear This List")), &QAction::triggered, this, [this] {
        QSettings().remove(QLatin1StringView(kKey));
        Fill();
    });
}

} // namespace corvane::desktop
