#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

#include <QWidget>

#include "Export/ExportChoices.h"

class QLineEdit;

namespace corvane::desktop {

/// What an export's destination depends on besides the clip.
struct ExportPlace {
    /// The folder to propose: that of the clip's file or of the project. Empty: the one of the last export,
    /// or the person's own.
    QString folder;
    /// The frame at the playhead: what a single picture shows.
    std::int64_t frame = 0;
    /// Whether another export is going to make this file; may be empty.
    std::function<bool(const std::filesystem::path&)> isTaken;
};

/// Asks where an export goes to: a line to type in and a button that browses. UI thread only.
class DestinationEdit final : public QWidget {
    Q_OBJECT
  public:
    /// `place` outlives the widget.
    DestinationEdit(const ExportPlace& place, QWidget* parent);

    /// Proposes a file for a clip of this name, to be exported as `choice`. `choice` outlives the widget.
    void Propose(const QString& clipName, const ExportChoice& choice);
    /// Gives the name the ending of another choice, which outlives the widget.
    void SetChoice(const ExportChoice& choice);

    /// The path that was entered, completed for the choice, if these frames may be exported there. Asks the
    /// person before files are replaced. Otherwise empty, with the focus on the line; `complaint` then says
    /// in a sentence what is wrong, and stays empty if the person did not want to replace a file. What is
    /// returned is where the next proposal begins.
    std::optional<std::filesystem::path> Confirm(std::pair<std::int64_t, std::int64_t> frames,
                                                 QString& complaint);

  private:
    void Browse();
    std::optional<std::filesystem::path> Entered(QString& complaint) const;
    QString WhyNot(const std::filesystem::path& path) const;
    bool ConfirmsReplacement(const std::filesystem::path& path, std::pair<std::int64_t, std::int64_t> frames);

    const ExportPlace& mPlace;
    const ExportChoice* mChoice = nullptr;
    QLineEdit* mPath = nullptr;
};

} // namespace corvane::desktop
