// The widget as a program and its forms see it: properties, signals, pictures, and failures that stay inside.
#include "automation/Dispatch.h"
#include "hosts/qt/QtSession.h"
#include "properties/PropertyTable.h"
#include "properties/PropertyValues.h"
#include "support/TemporaryFolder.h"

#include <QLabel>
#include <QMessageBox>
#include <QMetaProperty>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace lumora::test
{

namespace
{

QColor ColorAt(QWidget& widget, int x, int y)
{
    return widget.grab().toImage().pixelColor(x, y);
}

} // namespace

TEST(QtWidget, offers_every_property_of_the_table_and_signals_what_is_written)
{
    const auto widget = MakeWidget();
    const QMetaObject& meta = *widget->metaObject();
    for (const PropertyRow& row : PropertyTable())
    {
        SCOPED_TRACE(row.name);
        const int index = meta.indexOfProperty(std::string{row.name}.c_str());
        ASSERT_GE(index, 0);
        const QMetaProperty property = meta.property(index);
        EXPECT_TRUE(property.hasNotifySignal());
        EXPECT_EQ(property.isWritable(), row.write != nullptr);
        EXPECT_EQ(property.isStored(), row.saved);
        EXPECT_TRUE(property.read(widget.get()).isValid());
        if (!row.saved || row.type == PropertyType::Object)
            continue;
        const QSignalSpy told{widget.get(), property.notifySignal()};
        const Variant value = AnotherValue(row);
        QVariant qt;
        if (const auto* truth = std::get_if<bool>(&value))
            qt = *truth;
        else if (const auto* text = std::get_if<std::string>(&value))
            qt = QString::fromStdString(*text);
        else
            qt = VariantToDouble(value);
        ASSERT_TRUE(property.write(widget.get(), qt));
        EXPECT_TRUE(VariantsEqual(row.read(widget->viewport()), value));
        EXPECT_GE(told.count(), 1);
        const QVariant back = property.read(widget.get());
        EXPECT_TRUE(qt.typeId() == QMetaType::Double ? back.toFloat() == qt.toFloat() : back == qt);
    }
}

TEST(QtWidget, enumerations_are_known_by_name)
{
    const auto widget = MakeWidget();
    const QMetaObject& meta = *widget->metaObject();
    for (const Enumeration& enumeration : Enumerations())
    {
        const QMetaEnum known = meta.enumerator(meta.indexOfEnumerator(std::string{enumeration.name}.c_str()));
        ASSERT_EQ(known.keyCount(), static_cast<int>(enumeration.values.size())) << enumeration.name;
        for (const EnumerationValue& value : enumeration.values)
            EXPECT_EQ(known.keyToValue(std::string{value.name}.c_str()), value.value) << value.name;
    }
    ASSERT_TRUE(widget->setProperty("KeyMoveForward", "tdlNavKeyW"));
    EXPECT_EQ(widget->viewport().KeyMoveForward(), tdlNavKeyW);
    EXPECT_EQ(widget->property("KeyMoveForward").toString(), "tdlNavKeyW");
    ASSERT_TRUE(widget->setProperty("KeyMoveForward", 300)); // stored as given
    EXPECT_EQ(widget->viewport().KeyMoveForward(), 300);
}

TEST(QtWidget, singles_read_as_the_decimals_that_were_written)
{
    const auto widget = MakeWidget();
    EXPECT_EQ(widget->KeyVelocityRotate(), 1.571);
    widget->setFieldOfView(0.35);
    EXPECT_EQ(widget->viewport().FieldOfView(), 0.35F);
    EXPECT_EQ(widget->FieldOfView(), 0.35);
}

TEST(QtWidget, failures_are_signalled_and_not_thrown)
{
    const auto widget = MakeWidget();
    QSignalSpy failures{widget.get(), &ViewportWidget::Failed};
    widget->setFieldOfView(1e300);
    widget->setMousePointer(77);
    widget->setProperty("FeildOfView", 2);
    ASSERT_EQ(failures.count(), 3);
    EXPECT_EQ(failures[0][0].toInt(), error::Overflow);
    EXPECT_EQ(failures[1][0].toInt(), error::InvalidPropertyValue);
    EXPECT_TRUE(failures[2][2].toString().contains("FieldOfView"));

    QObject::connect(widget.get(), &ViewportWidget::UpdatePositions, [] { throw std::runtime_error{"no luck"}; });
    widget->RenderScene();
    ASSERT_EQ(failures.count(), 4);
    EXPECT_EQ(failures[3][2].toString(), "no luck");
}

// Run with several scale factors.
TEST(QtWidgetScaled, shows_the_picture_of_every_other_host_in_the_pixels_of_the_device)
{
    const auto widget = MakeWidget();
    const int side = qRound(Side * widget->devicePixelRatioF());
    widget->viewport().SetScene(HalfCoveredScene());
    ASSERT_TRUE(Show(*widget));
    EXPECT_EQ(widget->PictureSize(), QSize(side, side));
    const QImage shown = widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
    ASSERT_EQ(shown.size(), QSize(side, side));
    EXPECT_EQ(shown, PictureInMemory({side, side}));
}

TEST(QtWidget, draws_once_for_each_reason_and_rests_without_one)
{
    const auto widget = MakeWidget();
    ASSERT_TRUE(Show(*widget));
    int pictures = 0;
    QObject::connect(widget.get(), &ViewportWidget::UpdatePositions, [&] { ++pictures; });
    Settle();
    pictures = 0;
    widget->RenderScene();
    Settle();
    EXPECT_EQ(pictures, 1);
    widget->setFieldOfView(0.7);
    widget->setBackClippingPlane(500);
    Settle();
    EXPECT_EQ(pictures, 2); // both changes in one
}

TEST(QtWidget, follows_its_size_and_the_sizes_of_its_neighbours)
{
    QWidget form;
    QVBoxLayout layout{&form};
    ViewportWidget* const first = MakeWidget().release();
    ViewportWidget* const second = MakeWidget().release();
    layout.addWidget(first);
    layout.addWidget(second);
    first->setBackColor(0x0000FF); // red
    second->setBackColor(0xFF0000);
    for (const int height : {300, 420})
    {
        form.resize(200, height);
        ASSERT_TRUE(Show(form));
        QApplication::processEvents();
        EXPECT_EQ(ColorAt(*first, first->width() - 1, first->height() - 1), QColor(255, 0, 0));
        EXPECT_EQ(ColorAt(*second, second->width() - 1, second->height() - 1), QColor(0, 0, 255));
        EXPECT_EQ(first->grab().size(), first->size());
    }
    EXPECT_NE(first->hwnd(), second->hwnd());
}

TEST(QtWidget, has_the_face_that_every_control_has)
{
    struct Sink : EventSink
    {
        void OnEvent(std::int32_t id, std::span<Variant>) override { last = id; }
        std::int32_t last = 0;
    };
    auto widget = MakeWidget();
    const std::shared_ptr<Dispatchable> face = widget->face();
    const auto sink = std::make_shared<Sink>();
    widget->face()->Connect(sink);
    face->CallWith("AddCameraMovement", {0, 0, 1, 1});
    EXPECT_EQ(sink->last, 1);
    widget.reset();
    EXPECT_EQ(VariantToLong(face->Get("ViewportState")), tdlHalted);
}

TEST(QtWidget, a_fixed_border_lies_around_the_picture)
{
    const auto widget = MakeWidget();
    widget->setBackColor(0x00FF00);
    widget->setBorderStyle(tdlFixedSingle);
    ASSERT_TRUE(Show(*widget));
    EXPECT_EQ(widget->PictureSize(), QSize(Side - 2, Side - 2));
    EXPECT_EQ(ColorAt(*widget, 0, Side / 2), QColor(Qt::black));
    EXPECT_EQ(ColorAt(*widget, Side - 1, Side - 1), QColor(Qt::black));
    EXPECT_EQ(ColorAt(*widget, 1, 1), QColor(0, 255, 0));
    EXPECT_EQ(ColorAt(*widget, Side - 2, Side - 2), QColor(0, 255, 0));
}

TEST(QtWidget, a_halted_control_shows_a_sentence_and_design_time_starts_nothing)
{
    const auto live = MakeWidget();
    ASSERT_TRUE(Show(*live));
    const QImage blank = live->grab().toImage();
    const QSignalSpy told{live.get(), &ViewportWidget::ViewportStateChanged};
    live->viewport().KeyPress.Connect([](auto&) { throw RuntimeError{error::ObjectNotSet, "host", "gone"}; });
    QTest::keyClick(live.get(), Qt::Key_A);
    EXPECT_EQ(live->ViewportState(), tdlHalted);
    EXPECT_EQ(told.count(), 1);
    EXPECT_NE(live->grab().toImage(), blank);

    ViewportWidget::Options options;
    options.mode = ViewportWidget::Mode::DesignTime;
    ViewportWidget designed{options};
    designed.setEnabled(true);
    ASSERT_TRUE(Show(designed));
    EXPECT_EQ(designed.viewport().DirectDraw(), nullptr);
    EXPECT_EQ(designed.viewport().Camera(), nullptr);
    EXPECT_EQ(designed.ViewportState(), tdlRunning);
}

TEST(QtWidget, the_about_box_names_the_control_and_comes_back_from_its_tool)
{
    const tests::TemporaryFolder data; // without a registry there is no tool
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(data / ""));
    const auto widget = MakeWidget();
    QStringList seen;
    QTimer user; // acts whenever a dialog waits
    QObject::connect(&user, &QTimer::timeout,
                     [&]
                     {
                         QWidget* const dialog = QApplication::activeModalWidget();
                         if (auto* const box = qobject_cast<QMessageBox*>(dialog))
                         {
                             seen << box->text();
                             box->accept();
                         }
                         else if (dialog && seen.isEmpty())
                         {
                             for (const char* label : {"lblTitle", "lblVersion", "lblDescription"})
                                 seen << dialog->findChild<QLabel*>(label)->text();
                             seen << dialog->windowTitle();
                             // Not from here: a timer waits for its own slot.
                             QMetaObject::invokeMethod(dialog->findChild<QPushButton*>("cmdSysInfo"),
                                                       &QPushButton::click, Qt::QueuedConnection);
                         }
                         else if (dialog && seen.size() > 4)
                             dialog->findChild<QPushButton*>("cmdOK")->click();
                     });
    user.start(10);
    widget->viewport().ShowAboutBox();
    qunsetenv("XDG_DATA_HOME");
    EXPECT_EQ(seen, (QStringList{"3D Lumora Viewport", "Version 2.0.353", "Direct3D Retained Mode Viewport",
                                 "About 3D Lumora Viewport", "System Information Is Unavailable At This Time"}))
        << seen.join('|').toStdString();
}

TEST(QtWidget, a_control_that_is_held_outlives_its_widget_which_goes_without_a_signal)
{
    auto widget = MakeWidget();
    ASSERT_TRUE(Show(*widget));
    const std::shared_ptr<Viewport> held = widget->sharedViewport();
    const QSignalSpy told{widget.get(), &ViewportWidget::ViewportStateChanged};
    widget.reset();
    EXPECT_EQ(held->ViewportState(), tdlHalted);
    EXPECT_EQ(told.count(), 0);
    EXPECT_EQ(FailureOf([&] { held->RenderScene(); }).Number(), error::Halted);
    held->SetMousePointer(2);
    held->SetBackColor(255);
    EXPECT_EQ(held->BackColor(), 255);
}

} // namespace lumora::test
