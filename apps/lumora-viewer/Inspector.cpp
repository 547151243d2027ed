#include "lumora-viewer/Inspector.h"

#include "base/RuntimeError.h"
#include "hosts/qt/QtValues.h"
#include "hosts/qt/ViewportWidget.h"
#include "lumora-viewer/ViewerSettings.h"
#include "properties/PropertyGroups.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMetaProperty>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <map>

namespace lumora::viewer
{

namespace
{

constexpr int ValueColumn = 1;
constexpr int RowRole = Qt::UserRole; ///< the index in the property table; a group has none

QString Text(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

const PropertyRow* RowOf(const QVariant& index)
{
    return index.isValid() ? &PropertyTable()[static_cast<std::size_t>(index.toInt())] : nullptr;
}

bool CanChange(const PropertyRow& row)
{
    return row.write != nullptr && row.type != PropertyType::Object && row.name != "NavMouseButton";
}

// As ParsePropertyValue reads it.
QString TextOf(const PropertyRow& row, const Variant& value)
{
    if (row.type == PropertyType::Object)
        return VariantToObject(value) ? QStringLiteral("(set)") : QStringLiteral("(nothing)");
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag ? QStringLiteral("True") : QStringLiteral("False");
    if (const auto* number = std::get_if<float>(&value))
        return QString::number(ToShortDouble(*number), 'g', 9);
    if (const Enumeration* const enumeration = FindEnumeration(row.typeName))
        for (const EnumerationValue& named : enumeration->values)
            if (named.value == VariantToLong(value))
                return Text(named.name);
    return QString::fromStdString(VariantToString(value));
}

QStringList ChoicesOf(const PropertyRow& row)
{
    if (row.type == PropertyType::Boolean)
        return {"True", "False"};
    QStringList names;
    if (const Enumeration* const enumeration = FindEnumeration(row.typeName))
        for (const EnumerationValue& value : enumeration->values)
            names << Text(value.name);
    return names;
}

} // namespace

// A list where a property has few values, a line for any other.
class Inspector::Delegate : public QStyledItemDelegate
{
public:
    explicit Delegate(Inspector& inspector) : QStyledItemDelegate(&inspector), inspector_(inspector) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                          const QModelIndex& index) const override
    {
        const PropertyRow* const row = RowOf(index.siblingAtColumn(0).data(RowRole));
        if (index.column() != ValueColumn || !row || !CanChange(*row))
            return nullptr;
        const QStringList choices = ChoicesOf(*row);
        if (choices.isEmpty())
            return new QLineEdit{parent};
        auto* const list = new QComboBox{parent};
        list->addItems(choices);
        list->setEditable(row->type != PropertyType::Boolean); // numbers without a name
        list->setInsertPolicy(QComboBox::NoInsert);
        auto* const self = const_cast<Delegate*>(this);
        QObject::connect(list, &QComboBox::activated, self,
                         [self, list]
                         {
                             if (list->property(Entered).toBool())
                                 return;
                             Q_EMIT self->commitData(list);
                             Q_EMIT self->closeEditor(list);
                         });
        return list;
    }

    void setEditorData(QWidget* editor, const QModelIndex& index) const override
    {
        const QString text = index.data().toString();
        if (auto* const list = qobject_cast<QComboBox*>(editor))
            list->setCurrentText(text);
        else if (auto* const line = qobject_cast<QLineEdit*>(editor))
            line->setText(text);
    }

    void setModelData(QWidget* editor, QAbstractItemModel* /*model*/, const QModelIndex& index) const override
    {
        const auto* const list = qobject_cast<QComboBox*>(editor);
        const auto* const line = qobject_cast<QLineEdit*>(editor);
        const QString text = list ? list->currentText() : line ? line->text() : QString{};
        const PropertyRow* const row = RowOf(index.siblingAtColumn(0).data(RowRole));
        if (!row || text == index.data().toString())
            return;
        try
        {
            inspector_.Write(*row, ParsePropertyValue(*row, text.toStdString()));
        }
        catch (const RuntimeError& failure)
        {
            inspector_.complain_(QString::fromStdString(failure.Description()) + ".");
        }
    }

protected:
    // Return is taken care of here; a choice from the list is not.
    bool eventFilter(QObject* editor, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress)
        {
            const int key = static_cast<QKeyEvent*>(event)->key();
            editor->setProperty(Entered, key == Qt::Key_Return || key == Qt::Key_Enter);
        }
        return QStyledItemDelegate::eventFilter(editor, event);
    }

private:
    static constexpr const char* Entered = "entered";

    Inspector& inspector_;
};

Inspector::Inspector(ViewportWidget& viewport, std::function<void(const QString&)> complain, QWidget* parent)
    : QWidget(parent), viewport_(viewport), complain_(std::move(complain)), search_(new QLineEdit{this}),
      all_(new QCheckBox{"Show &All", this}), tree_(new QTreeWidget{this}),
      reset_(new QPushButton{"&Reset to Default", this})
{
    search_->setPlaceholderText("Search");
    search_->setClearButtonEnabled(true);
    search_->setObjectName("search");
    all_->setObjectName("all");
    all_->setToolTip("Properties that programs use and browsers leave out, too");
    tree_->setObjectName("properties");
    tree_->setHeaderLabels({"Property", "Value"});
    tree_->setItemDelegate(new Delegate{*this});
    tree_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tree_->setUniformRowHeights(true);
    reset_->setObjectName("reset");
    auto* const layout = new QVBoxLayout{this};
    layout->addWidget(search_);
    layout->addWidget(all_);
    layout->addWidget(tree_);
    layout->addWidget(reset_);
    Fill();
    Filter();
    tree_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    QObject::connect(search_, &QLineEdit::textChanged, this, [this] { Filter(); });
    QObject::connect(all_, &QCheckBox::toggled, this, [this] { Filter(); });
    QObject::connect(reset_, &QPushButton::clicked, this, [this] { ResetCurrent(); });
    const auto edit = [this](QTreeWidgetItem* item) { tree_->editItem(item, ValueColumn); };
    QObject::connect(tree_, &QTreeWidget::itemClicked, this,
                     [edit](QTreeWidgetItem* item, int column)
                     {
                         if (column == ValueColumn)
                             edit(item);
                     });
    QObject::connect(tree_, &QTreeWidget::itemActivated, this, edit);
    refresh_.setSingleShot(true);
    refresh_.setInterval(50);
    refresh_.callOnTimeout([this] { Refresh(); });
    FollowChanges();
}

void Inspector::Fill()
{
    std::map<std::string_view, QTreeWidgetItem*> groups;
    const auto rows = PropertyTable();
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        QTreeWidgetItem*& group = groups[GroupOf(rows[i])];
        if (!group)
        {
            group = new QTreeWidgetItem{tree_, {Text(GroupOf(rows[i]))}};
            group->setFirstColumnSpanned(true);
            group->setExpanded(true);
        }
        auto* const item = new QTreeWidgetItem{group, {Text(rows[i].name)}};
        item->setData(0, RowRole, static_cast<int>(i));
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        for (const int column : {0, ValueColumn})
            item->setToolTip(column, Text(rows[i].help));
        if (!CanChange(rows[i]))
            item->setForeground(ValueColumn, palette().brush(QPalette::Disabled, QPalette::Text));
    }
}

// The properties of the widget tell of their changes, each by its own signal.
void Inspector::FollowChanges()
{
    const QMetaObject& meta = *viewport_.metaObject();
    const QMetaMethod start = refresh_.metaObject()->method(refresh_.metaObject()->indexOfMethod("start()"));
    for (const PropertyRow& row : PropertyTable())
    {
        const int index = meta.indexOfProperty(std::string{row.name}.c_str());
        if (index >= 0)
            QObject::connect(&viewport_, meta.property(index).notifySignal(), &refresh_, start);
    }
}

void Inspector::showEvent(QShowEvent* event)
{
    Refresh();
    QWidget::showEvent(event);
}

void Inspector::Refresh()
{
    if (!isVisible())
        return;
    for (QTreeWidgetItemIterator at{tree_}; *at; ++at)
    {
        const PropertyRow* const row = RowOf((*at)->data(0, RowRole));
        if (!row)
            continue;
        Variant value;
        IgnoringErrors([&] { value = row->read(viewport_.viewport()); });
        const QString text = TextOf(*row, value);
        if ((*at)->text(ValueColumn) == text)
            continue;
        (*at)->setText(ValueColumn, text);
        QFont font = tree_->font();
        font.setBold(CanChange(*row) && text != TextOf(*row, row->convert(ViewerDefault(*row))));
        (*at)->setFont(0, font);
        (*at)->setFont(ValueColumn, font);
    }
}

void Inspector::Filter()
{
    const QString text = search_->text();
    for (int i = 0; i < tree_->topLevelItemCount(); ++i)
    {
        QTreeWidgetItem& group = *tree_->topLevelItem(i);
        int shown = 0;
        for (int j = 0; j < group.childCount(); ++j)
        {
            QTreeWidgetItem& item = *group.child(j);
            const bool found = item.text(0).contains(text, Qt::CaseInsensitive) ||
                               item.toolTip(0).contains(text, Qt::CaseInsensitive) ||
                               group.text(0).contains(text, Qt::CaseInsensitive);
            const bool isShown = found && (all_->isChecked() || !RowOf(item.data(0, RowRole))->hidden);
            item.setHidden(!isShown);
            shown += isShown ? 1 : 0;
        }
        group.setHidden(shown == 0);
    }
}

const PropertyRow* Inspector::CurrentRow() const
{
    const QTreeWidgetItem* const item = tree_->currentItem();
    return item ? RowOf(item->data(0, RowRole)) : nullptr;
}

void Inspector::ResetCurrent()
{
    const PropertyRow* const row = CurrentRow();
    if (row && CanChange(*row))
        Write(*row, ViewerDefault(*row));
}

// The control stores what it is given before the platform refuses it, and later stops at it: a refused value gives way
// to the one before.
bool Inspector::Write(const PropertyRow& row, const Variant& value)
{
    Viewport& control = viewport_.viewport();
    Variant before;
    IgnoringErrors([&] { before = row.read(control); });
    bool written = true;
    try
    {
        row.write(control, value);
        control.RenderScene();
    }
    catch (const RuntimeError& failure)
    {
        complain_(
            QStringLiteral("%1 was not set: %2.").arg(Text(row.name), QString::fromStdString(failure.Description())));
        IgnoringErrors([&] { row.write(control, before); });
        viewport_.RenderScene();
        written = false;
    }
    Refresh();
    return written;
}

} // namespace lumora::viewer
