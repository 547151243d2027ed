// Forms with a viewport: compiled into a program, and loaded at run time through the form designer's plugin.
#include "hosts/qt/FormMistakes.h"
#include "hosts/qt/QtSession.h"
#include "ui_Form.h"

#include <QBuffer>
#include <QFile>
#include <QUiLoader>

namespace lumora::test
{

namespace
{

void ExpectFormSettings(ViewportWidget& scene)
{
    EXPECT_EQ(scene.viewport().FieldOfView(), 0.35F);
    EXPECT_EQ(scene.viewport().KeyMoveForward(), tdlNavKeyW);
    EXPECT_EQ(scene.viewport().BackColor(), 0x800000);
    EXPECT_FALSE(scene.viewport().WaitForVSYNC());
    EXPECT_NE(scene.viewport().Camera(), nullptr) << "the control is not live";
}

std::unique_ptr<QWidget> LoadForm(const QByteArray& text)
{
    QUiLoader loader;
    loader.clearPluginPaths();
    loader.addPluginPath(LUMORA_DESIGNER_PLUGINS);
    QBuffer file;
    file.setData(text);
    return std::unique_ptr<QWidget>{loader.load(&file)};
}

QByteArray FormWith(const QByteArray& property)
{
    return R"(<ui version="4.0"><class>Form</class><widget class="lumora::ViewportWidget" name="scene">)" + property +
           R"(</widget><customwidgets><customwidget><class>lumora::ViewportWidget</class><extends>QWidget</extends>)"
           R"(<header>hosts/qt/ViewportWidget.h</header></customwidget></customwidgets></ui>)";
}

QStringList messages;

QStringList MessagesOf(const std::function<void()>& action)
{
    messages.clear();
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) { messages << text; });
    action();
    qInstallMessageHandler(before);
    return messages;
}

} // namespace

TEST(QtForm, a_compiled_form_holds_a_live_control_with_its_settings)
{
    QWidget form;
    Ui::Form ui;
    ui.setupUi(&form);
    ExpectFormSettings(*ui.scene);
    ASSERT_TRUE(Show(form));
    EXPECT_EQ(ui.scene->grab().toImage().pixelColor(5, 5), QColor(0, 0, 128));
}

TEST(QtForm, a_loaded_form_holds_the_same)
{
    QFile file{LUMORA_FORM};
    ASSERT_TRUE(file.open(QFile::ReadOnly));
    const auto form = LoadForm(file.readAll());
    ASSERT_TRUE(form);
    auto* const scene = form->findChild<ViewportWidget*>("scene");
    ASSERT_TRUE(scene);
    ExpectFormSettings(*scene);
}

TEST(QtForm, what_a_form_gets_wrong_is_left_out_with_one_sentence)
{
    struct Mistake
    {
        const char* property;
        const char* told;
        bool isToldByTheWidget; // values that Qt itself throws away never reach it
    };
    const Mistake mistakes[] = {
        {R"(<property name="FieldOfVeiw"><double>0.3</double></property>)", "FieldOfView", true},
        {R"(<property name="fieldOfView"><double>0.3</double></property>)", "FieldOfView", true},
        {R"(<property name="FieldOfView"><string>wide</string></property>)", "FieldOfView", false},
        {R"(<property name="FieldOfView"><double>1e300</double></property>)", "verflow", true},
        {R"(<property name="KeyMoveForward"><enum>lumora::ViewportProperties::tdlNavKeyQQ</enum></property>)",
         "KeyMoveForward", true},
        {R"(<property name="CollisionSamples"><string>some</string></property>)", "CollisionSamples", false},
        {R"(<property name="Scene"><string>all</string></property>)", "Scene", false},
    };
    for (const auto& [property, told, isToldByTheWidget] : mistakes)
    {
        SCOPED_TRACE(property);
        std::unique_ptr<QWidget> form;
        QByteArray text = FormWith(property);
        const QStringList said = MessagesOf([&] { form = LoadForm(text); });
        auto* const scene = qobject_cast<ViewportWidget*>(form.get());
        ASSERT_TRUE(scene);
        EXPECT_EQ(scene->viewport().FieldOfView(), 0.5F);
        EXPECT_EQ(scene->viewport().KeyMoveForward(), tdlNavKeyDisable);
        EXPECT_EQ(said.size(), isToldByTheWidget ? 1 : 0) << said.join('\n').toStdString();
        QBuffer file{&text};
        ASSERT_TRUE(file.open(QBuffer::ReadOnly));
        const QStringList mistaken = FormMistakes(file);
        ASSERT_EQ(mistaken.size(), 1);
        EXPECT_TRUE(mistaken[0].contains(told)) << mistaken[0].toStdString();
    }
    QFile good{LUMORA_FORM};
    ASSERT_TRUE(good.open(QFile::ReadOnly));
    EXPECT_EQ(FormMistakes(good), QStringList{});
}

} // namespace lumora::test
