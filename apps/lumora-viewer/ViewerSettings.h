// What a person finds again at the next start: the control's settings, the window, the files opened last.
#pragma once

#include "properties/JsonPropertyBag.h"
#include "properties/PropertyTable.h"

#include <QSettings>
#include <QStringList>
#include <memory>
#include <optional>

namespace lumora::viewer
{

/// What a property is in a viewer that nobody has changed.
Variant ViewerDefault(const PropertyRow& row);

/// The control's settings, in a file: what differs from the viewer's defaults. What framing, drags and scenes set by
/// themselves is not kept.
class ViewerBag : public PropertyBag
{
public:
    /// Without a file when that cannot be used: then nothing is kept, and Complaint says why.
    explicit ViewerBag(const std::string& path);

    Variant ReadProperty(std::string_view name, const Variant& defaultValue) override;
    void WriteProperty(std::string_view name, const Variant& value, const Variant& defaultValue) override;

    /// Not to be kept as long as it is what the scene brought.
    void SetOwnBackColor(std::int32_t color) { ownBackColor_ = color; }

    /// A sentence, or nothing.
    const QString& Complaint() const { return complaint_; }

    /// Writes the file. Errors: those of JsonPropertyBag::Store.
    void Store() const;

private:
    std::optional<JsonPropertyBag> file_;
    std::int32_t ownBackColor_ = 0;
    QString complaint_;
};

class ViewerSettings
{
public:
    static constexpr int MaximumRecent = 10;

    /// Both files lie in this folder, which is made at need.
    explicit ViewerSettings(const QString& folder);

    ViewerBag& Control() { return *control_; }
    QSettings& Window() { return *window_; }

    QStringList Recent() const;

    /// Puts a file first.
    void AddRecent(const QString& path);
    void RemoveRecent(const QString& path);

private:
    std::unique_ptr<ViewerBag> control_;
    std::unique_ptr<QSettings> window_;
};

/// This user's.
QString SettingsFolder();

} // namespace lumora::viewer
