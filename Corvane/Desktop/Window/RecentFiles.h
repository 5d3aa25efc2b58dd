#pragma once

#include <filesystem>

#include <QMenu>
#include <QStringList>

namespace corvane::desktop {

/// The menu of the project files that were opened or saved last, kept from run to run. UI thread.
class RecentFiles final : public QMenu {
    Q_OBJECT

  public:
    explicit RecentFiles(QWidget* parent = nullptr);

    /// Puts a file at the top.
    void Add(const std::filesystem::path& file);

  Q_SIGNALS:
    /// The person chose a file of the menu.
    void Chosen(const QString& file);

  private:
    void Fill();
};

} // namespace corvane::desktop
