// Faults sought: a color that comes back rounded or without its alpha, a file name without its extension, a
// file that is replaced without a question, an answer that means the opposite.
#include <fstream>

#include <QColorDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include "Tests/Desktop/DesktopFixture.h"

namespace {

using corvane::ColorPickerRequest;
using corvane::SaveFileRequest;
using lumui::controls::ColorRGBA;
using lumui::dialogs::UI_MessageBox;

ColorRGBA kOdd{0.123456789f, 2.5f, -0.25f, 0.333333f};

TEST(ColorPicker, KeepsExactlyWhatThePersonDidNotChange) {
    Platform();
    WhenShown([](QDialog& window) {
        auto& picker = dynamic_cast<QColorDialog&>(window);
        EXPECT_TRUE(picker.testOption(QColorDialog::ShowAlphaChannel));
        EXPECT_EQ(picker.currentColor().alpha(), 85);
        QColor color = picker.currentColor();
        color.setGreen(51);
        picker.setCurrentColor(color);
        picker.accept();
    });
    const auto color = Platform().RunColorPicker({nullptr, kOdd});
    ASSERT_TRUE(color);
    EXPECT_EQ(color->mRed, kOdd.mRed);
    EXPECT_NEAR(color->mGreen, 0.2, 1e-5);
    EXPECT_EQ(color->mBlue, kOdd.mBlue);
    EXPECT_EQ(color->mAlpha, kOdd.mAlpha);
}

TEST(ColorPicker, GivesNothingWhereItIsCancelled) {
    Platform();
    WhenShown([](QDialog& window) { QTest::keyClick(&window, Qt::Key_Escape); });
    EXPECT_FALSE(Platform().RunColorPicker({nullptr, kOdd}));
}

TEST(MessageBox, AnswersWithTheButtonThatWasPressed) {
    Platform();
    struct Row {
        void (*press)(QMessageBox&);
        std::int32_t answer;
    };
    constexpr Row kRows[] = {
        {[](QMessageBox& box) { box.button(QMessageBox::Yes)->click(); }, 16},
        {[](QMessageBox& box) { box.button(QMessageBox::No)->click(); }, 64},
        {[](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); }, 16}, // the default
        {[](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }, 64},
        {[](QMessageBox& box) { box.close(); }, 64},
    };
    for (const Row& row : kRows) {
        WhenShown([&](QDialog& window) {
            auto& box = dynamic_cast<QMessageBox&>(window);
            EXPECT_EQ(box.text(), "Again? <b>");
            row.press(box);
        });
        EXPECT_EQ(Platform().RunMessageBox({nullptr, u"Title", u"Again? <b>", 80, UI_MessageBox::kButton_Yes,
                                            UI_MessageBox::kIcon_Warning}),
                  row.answer);
    }
}

/// A save-file dialog that begins in a folder with one file, "old.synthex".
class SaveDialogTest : public testing::Test {
  protected:
    SaveDialogTest() : platform((Platform(), corvane::DesktopOptions{.folder = Folder(), .remedy = {}})) {
        std::ofstream(Folder() + "/old.synthex") << "{}";
    }

    std::string Folder() const { return folder.path().toStdString(); }

    /// Types a name and presses "Save".
    static void SaveAs(QDialog& window, const QString& name) {
        auto* const edit = window.findChild<QLineEdit*>("fileNameEdit");
        if (edit == nullptr) throw std::runtime_error("no field for the name");
        edit->setText(name);
        QTest::keyClick(edit, Qt::Key_Return);
    }

    std::string Run() {
        SaveFileRequest request{.parent = nullptr,
                                .filters = {{u"Synthex Data", u"synthex", u"synthex"}},
                                .filterIndex = 0,
                                .defaultName = u"Default Frame",
                                .confirmReplace = true};
        const auto path = platform.RunSaveFileDialog(request);
        return path ? Mosk::ToUTF8(*path).substr(Folder().size()) : "cancelled";
    }

    QTemporaryDir folder;
    corvane::desktop::QtPlatform platform;
};

TEST_F(SaveDialogTest, AddsTheExtensionThatThePersonDidNotType) {
    const std::pair<const char*, const char*> kRows[] = {
        {"clip", "/clip.synthex"},
        {"clip.synthex", "/clip.synthex"},
        {"clip.v2", "/clip.v2"},
        {"clip.", "/clip.synthex"},
        {"Schön \xE2\x82\xAC", "/Schön \xE2\x82\xAC.synthex"},
    };
    for (const auto& [typed, path] : kRows) {
        WhenShown([typed = typed](QDialog& window) { SaveAs(window, QString::fromUtf8(typed)); });
        EXPECT_EQ(Run(), path);
    }
}

TEST_F(SaveDialogTest, BeginsInItsFolderWithTheDefaultName) {
    WhenShown([](QDialog& window) { window.accept(); });
    EXPECT_EQ(Run(), "/Default Frame.synthex");
    WhenShown([](QDialog& window) { window.reject(); });
    EXPECT_EQ(Run(), "cancelled");
}

TEST_F(SaveDialogTest, AsksBeforeAFileIsReplaced) {
    for (const char* const typed : {"old", "old.synthex"}) {
        for (const auto& [button, path] :
             {std::pair(QMessageBox::Yes, "/old.synthex"), std::pair(QMessageBox::No, "cancelled")}) {
            bool asked = false;
            WhenShown([&, button = button](QDialog& window) {
                WhenShown([&asked, button = button](QDialog& question) {
                    asked = true;
                    dynamic_cast<QMessageBox&>(question).button(button)->click();
                });
                SaveAs(window, QString::fromLatin1(typed));
            });
            EXPECT_EQ(Run(), path) << typed;
            EXPECT_TRUE(asked) << typed;
        }
    }
}

} // namespace
