#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QWidget>

#include "CompareJob.h"
#include "ComparedPictures.h"
#include "ComparisonTimeline.h"
#include "PairLoader.h"

namespace corvane::desktop {

/// A window of its own that compares a clip with a video, and shows what was found: the findings, a timeline,
/// and expected and found pictures. Begins when it is made; closing it ends the comparison. UI thread.
class ComparisonWindow final : public QWidget {
    Q_OBJECT

  public:
    /// `name` is what the project calls the clip.
    ComparisonWindow(std::shared_ptr<const Clip> clip, const QString& name, std::filesystem::path video,
                     QWidget* parent);
    ~ComparisonWindow() override;

  Q_SIGNALS:
    /// The comparison is over.
    void Done();

  private:
    void MakeWidgets(const QString& name);
    QLayout* MakeSummary(const QString& name);
    QWidget* MakePictures();
    QWidget* MakeViewButtons();
    void ShowReport(const std::shared_ptr<const CompareReport>& report);
    void ShowFindings();
    void AddRemark(const std::string& text);
    void EndProgress(const QString& summary);
    void GoToFinding(int row);
    void GoToPicture(std::int64_t number);
    void SaveReport();
    void ShowPair(const std::shared_ptr<const PicturePair>& pair);

    const std::shared_ptr<const Clip> mClip;
    const std::filesystem::path mVideo;
    std::shared_ptr<const CompareReport> mReport;
    QLabel* mSummary = nullptr;
    QProgressBar* mProgress = nullptr;
    QPushButton* mStop = nullptr;
    QPushButton* mSave = nullptr;
    QListWidget* mFindings = nullptr;
    ComparedPictures* mPictures = nullptr;
    QLabel* mPlace = nullptr;
    ComparisonTimeline* mTimeline = nullptr;
    PairLoader mPairs;
    CompareJob mJob;
};

} // namespace corvane::desktop
