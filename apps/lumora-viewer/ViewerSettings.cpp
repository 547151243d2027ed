#include "lumora-viewer/ViewerSettings.h"

#include "base/RuntimeError.h"
#include "lumora-viewer/Keys.h"

#include <QDir>
#include <QStandardPaths>
#include <algorithm>

namespace lumora::viewer
{

namespace
{

struct Default
{
    std::string_view name;
    Variant value;
};

const Default Defaults[] = {
    {"Enabled", true},
    {"NavControlPrimary", true}, // for who has no middle button
    {"CollisionSamples", std::int32_t{5}},
    {"CollisionDistance", 0.1F},
    {"NavMouseSensitivity", std::int32_t{60}}, // four pixels
};

// Set by views, by every drag, or by scenes.
constexpr std::string_view PassingNames[] = {
    "Enabled",       "FrontClippingPlane", "BackClippingPlane",  "FieldOfView",
    "SceneOriginX",  "SceneOriginY",       "SceneOriginZ",       "MouseNavigationMethod",
    "NavMouseX",     "NavMouseY",          "NavMouseShiftX",     "NavMouseShiftY",
    "NavMouseCtrlX", "NavMouseCtrlY",      "NavMouseShiftCtrlX", "NavMouseShiftCtrlY",
};

constexpr const char* RecentFiles = "recentFiles";

bool IsPassing(std::string_view name)
{
    return std::ranges::find(PassingNames, name) != std::end(PassingNames);
}

} // namespace

Variant ViewerDefault(const PropertyRow& row)
{
    const auto* const found = std::ranges::find(Defaults, row.name, &Default::name);
    if (found != std::end(Defaults))
        return found->value;
    const tdlNavKey key = DefaultKey(row.name);
    return key == tdlNavKeyDisable ? row.defaultValue : Variant{std::int32_t{key}};
}

ViewerBag::ViewerBag(const std::string& path)
{
    try
    {
        file_ = JsonPropertyBag::OpenOrCreate(path);
    }
    catch (const RuntimeError& failure)
    {
        complaint_ = QStringLiteral("The settings start anew and will not be kept: %1")
                         .arg(QString::fromStdString(failure.Description()));
    }
}

Variant ViewerBag::ReadProperty(std::string_view name, const Variant& defaultValue)
{
    const PropertyRow* const row = FindProperty(name);
    const Variant own = row ? ViewerDefault(*row) : defaultValue;
    return file_ && !IsPassing(name) ? file_->ReadProperty(name, own) : own;
}

void ViewerBag::WriteProperty(std::string_view name, const Variant& value, const Variant& defaultValue)
{
    const PropertyRow* const row = FindProperty(name);
    Variant own = row ? ViewerDefault(*row) : defaultValue;
    if (name == "BackColor" && VariantsEqual(value, ownBackColor_))
        own = value;
    if (file_)
        file_->WriteProperty(name, IsPassing(name) ? own : value, own);
}

void ViewerBag::Store() const
{
    if (file_)
        file_->Store();
}

ViewerSettings::ViewerSettings(const QString& folder)
{
    const QDir place{folder};
    place.mkpath(".");
    control_ = std::make_unique<ViewerBag>(place.filePath("viewport.json").toStdString());
    window_ = std::make_unique<QSettings>(place.filePath("window.ini"), QSettings::IniFormat);
}

QStringList ViewerSettings::Recent() const
{
    return window_->value(RecentFiles).toStringList().mid(0, MaximumRecent);
}

void ViewerSettings::AddRecent(const QString& path)
{
    QStringList recent = Recent();
    recent.removeAll(path);
    recent.prepend(path);
    window_->setValue(RecentFiles, recent.mid(0, MaximumRecent));
    window_->sync();
}

void ViewerSettings::RemoveRecent(const QString& path)
{
    QStringList recent = Recent();
    recent.removeAll(path);
    window_->setValue(RecentFiles, recent);
}

QString SettingsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/lumora-viewer";
}

} // namespace lumora::viewer
