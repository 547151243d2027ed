// Every property of the control, to look at and to change while it runs.
#pragma once

#include "base/Variant.h"

#include <QTimer>
#include <QWidget>
#include <functional>

class QCheckBox;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace lumora
{
class ViewportWidget;
struct PropertyRow;
} // namespace lumora

namespace lumora::viewer
{

/// Properties in groups, with a field to search in; the hidden ones only where the box for all is checked. Those that
/// are not as a viewer has them at first are bold, and can be reset. Follows the control while it is visible.
class Inspector : public QWidget
{
public:
    /// `complain` hears a sentence about each value that was not taken. `viewport` must live longer.
    Inspector(ViewportWidget& viewport, std::function<void(const QString&)> complain, QWidget* parent = nullptr);

    /// Writes and draws; false after a complaint.
    bool Write(const PropertyRow& row, const Variant& value);

    QSize sizeHint() const override { return {360, 500}; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    class Delegate;

    void Fill();
    void Refresh();
    void Filter();
    void ResetCurrent();
    void FollowChanges();
    const PropertyRow* CurrentRow() const;

    ViewportWidget& viewport_;
    std::function<void(const QString&)> complain_;
    QLineEdit* search_;
    QCheckBox* all_;
    QTreeWidget* tree_;
    QPushButton* reset_;
    QTimer refresh_; ///< many changes make one refresh
};

} // namespace lumora::viewer
