// A viewer with settings of its own, in a folder with models.
#pragma once

#include "hosts/qt/QtSession.h"
#include "lumora-viewer/MainWindow.h"
#include "support/TemporaryFolder.h"

#include <QLabel>
#include <filesystem>

namespace lumora::viewer
{

/// A cube of two units around `centre`.
inline std::string CubeAround(float centre)
{
    std::string text;
    for (int corner = 0; corner < 8; ++corner)
    {
        text += "v";
        for (const int bit : {1, 2, 4})
            text += " " + std::to_string(centre + ((corner & bit) != 0 ? 1.0F : -1.0F));
        text += "\n";
    }
    return text + "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n";
}

class ViewerTest : public testing::Test
{
protected:
    ViewerTest()
    {
        options_.settingsFolder = QString::fromStdString(folder_ / "settings");
        folder_.Write("cube.obj", CubeAround(0));
    }

    QString Path(const std::string& name) const { return QString::fromStdString(folder_ / name); }

    /// A program in place of the one that reads models.
    void UseWorker(const std::string& body)
    {
        folder_.Write("worker", "#!/bin/sh\n" + body + "\n");
        std::filesystem::permissions(folder_ / "worker", std::filesystem::perms::owner_all);
        options_.workerPath = folder_ / "worker";
    }

    /// The window with all it loads loaded, and nothing in the picture but that.
    void Start(const std::vector<std::string>& models = {})
    {
        window_ = std::make_unique<MainWindow>(options_);
        window_->setGeometry(100, 100, 640, 480);
        ASSERT_TRUE(test::Show(*window_));
        window_->View().setWaitForVSYNC(false);
        window_->View().setNavControlPrimary(false);
        window_->Start(models);
        ASSERT_TRUE(test::Eventually([&] { return !window_->IsLoading(); }));
    }

    Viewport& Control() { return window_->View().viewport(); }
    QImage Picture() { return window_->View().grab().toImage().convertToFormat(QImage::Format_RGB32); }

    /// The sentence above the picture; empty when there is none.
    QString Message() const
    {
        const auto* const text = window_->findChild<QLabel*>("message");
        return text->isVisible() ? text->text() : QString{};
    }

    tests::TemporaryFolder folder_;
    MainWindow::Options options_;
    std::unique_ptr<MainWindow> window_;
};

/// The rectangle of pixels that differ from the top-left one, and how many they are.
struct Shown
{
    QRect place;
    int count = 0;
};

inline Shown FindShown(const QImage& picture)
{
    Shown shown;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixel(x, y) != picture.pixel(0, 0))
            {
                shown.place |= QRect{x, y, 1, 1};
                ++shown.count;
            }
    return shown;
}

} // namespace lumora::viewer
