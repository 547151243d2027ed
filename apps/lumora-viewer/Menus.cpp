#include "lumora-viewer/Menus.h"

#include "lumora-viewer/Keys.h"
#include "lumora-viewer/MainWindow.h"

#include <QActionGroup>
#include <QColorDialog>
#include <QDialog>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QStyle>
#include <QToolBar>
#include <QVBoxLayout>
#include <span>

namespace lumora::viewer
{

namespace
{

struct ViewChoice
{
    const char* label;
    tdlOrientation view;
};

constexpr ViewChoice Views[] = {{"&Front", tdlFrontView},   {"&Rear", tdlRearView},   {"&Top", tdlTopView},
                                {"&Bottom", tdlBottomView}, {"R&ight", tdlRightView}, {"&Left", tdlLeftView}};

struct Choice
{
    const char* label;
    std::int32_t value;
};

// The values of a property that a person chooses from.
struct ChoiceMenu
{
    const char* title;
    std::string_view property;
    std::vector<Choice> choices;
};

const ChoiceMenu Projections{"&Projection",
                             "ProjectionType",
                             {{"&Perspective", D3DRMPROJECT_PERSPECTIVE},
                              {"&Orthographic", D3DRMPROJECT_ORTHOGRAPHIC},
                              {"Perspective, &Right-Handed", D3DRMPROJECT_RIGHTHANDPERSPECTIVE},
                              {"Orthographic, Right-&Handed", D3DRMPROJECT_RIGHTHANDORTHOGRAPHIC}}};

const ChoiceMenu Looks[] = {
    {"&Fill",
     "FillMode",
     {{"&Solid", D3DRMFILL_SOLID}, {"&Wireframe", D3DRMFILL_WIREFRAME}, {"&Points", D3DRMFILL_POINTS}}},
    {"&Shading",
     "ShadeMode",
     {{"&Flat", D3DRMSHADE_FLAT}, {"&Gouraud", D3DRMSHADE_GOURAUD}, {"&Phong", D3DRMSHADE_PHONG}}},
    {"&Edges", "CoolMode", {{"&None", 0}, {"&Over a Flat Picture", 1}, {"&Under a Flat Picture", 2}}},
    {"&Light", "LightMode", {{"&On", D3DRMLIGHT_ON}, {"O&ff", D3DRMLIGHT_OFF}}},
    {"&Translucency",
     "RenderMode",
     {{"&Sorted", tdlBlendedSorted}, {"&Blended", tdlBlended}, {"S&tippled", tdlStippled}}},
    {"&Back Faces",
     "CullMethod",
     {{"&Drawn", D3DCULL_NONE}, {"Left Out, &Clockwise", D3DCULL_CW}, {"Left Out, C&ounter-Clockwise", D3DCULL_CCW}}},
    {"Te&xtures",
     "TextureQuality",
     {{"&Nearest", D3DRMTEXTURE_NEAREST},
      {"&Linear", D3DRMTEXTURE_LINEAR},
      {"&Mipmaps", D3DRMTEXTURE_MIPLINEAR},
      {"&Between Mipmaps", D3DRMTEXTURE_LINEARMIPLINEAR}}},
    {"&Anti-Aliasing", "AntiAlias", {{"&None", tdlNone}, {"&2 x 2", tdl2X}, {"&4 x 4", tdl4X}}},
    {"&Driver",
     "Direct3DDevice",
     {{"&Hardware", tdlDirect3DHALDevice},
      {"&Software", tdlDirect3DRGBDevice},
      {"&Monochrome", tdlDirect3DRampDevice},
      {"&Reference", tdlDirect3DRefDevice}}},
};

struct Switch
{
    const char* label;
    std::string_view property;
};

constexpr Switch NavControls[] = {{"&Primary Control", "NavControlPrimary"},
                                  {"&Glide Control", "NavControlGlide"},
                                  {"&Advance Control", "NavControlAdvance"}};

class Builder
{
public:
    explicit Builder(MainWindow& window) : window_(window), tools_(window.addToolBar("Tools"))
    {
        tools_->setObjectName("tools");
    }

    void BuildFile();
    void BuildView();
    void BuildLook();
    void BuildNavigate();
    void BuildHelp();

private:
    template<typename Function>
    QAction* Add(QMenu* menu, const QString& label, const QKeySequence& shortcut, Function&& function)
    {
        auto* const action = new QAction{label, &window_};
        action->setShortcut(shortcut);
        QObject::connect(action, &QAction::triggered, &window_, std::forward<Function>(function));
        menu->addAction(action);
        return action;
    }

    /// The same with a key that counts only while nobody types into a panel.
    template<typename Function>
    QAction* AddForView(QMenu* menu, const QString& label, Qt::Key key, Function&& function)
    {
        QAction* const action = Add(menu, label, key, std::forward<Function>(function));
        action->setShortcutContext(Qt::WidgetShortcut);
        window_.View().addAction(action);
        return action;
    }

    void AddChoices(QMenu* parent, const ChoiceMenu& menu);
    void AddSwitch(QMenu* menu, const Switch& item);
    void FillRecent(QMenu* recent);

    MainWindow& window_;
    QToolBar* tools_;
};

// What is checked is asked when the menu opens: properties change by many ways.
void Builder::AddChoices(QMenu* parent, const ChoiceMenu& menu)
{
    QMenu* const choices = parent->addMenu(menu.title);
    auto* const group = new QActionGroup{choices};
    for (const Choice& choice : menu.choices)
    {
        QAction* const action =
            Add(choices, choice.label, {},
                [&window = window_, name = menu.property, value = choice.value] { window.SetProperty(name, value); });
        action->setCheckable(true);
        action->setData(choice.value);
        group->addAction(action);
    }
    QObject::connect(choices, &QMenu::aboutToShow, &window_,
                     [&window = window_, name = menu.property, group]
                     {
                         group->setExclusive(false); // the value may be none of these
                         for (QAction* const action : group->actions())
                             action->setChecked(action->data().toInt() == VariantToLong(window.Property(name)));
                         group->setExclusive(true);
                     });
}

void Builder::AddSwitch(QMenu* menu, const Switch& item)
{
    QAction* const action =
        Add(menu, item.label, {}, [&window = window_, name = item.property](bool on) { window.SetProperty(name, on); });
    action->setCheckable(true);
    QObject::connect(menu, &QMenu::aboutToShow, &window_,
                     [&window = window_, name = item.property, action]
                     { action->setChecked(VariantToBoolean(window.Property(name))); });
}

void Builder::FillRecent(QMenu* recent)
{
    recent->clear();
    for (const QString& path : window_.Settings().Recent())
        Add(recent, QString{path}.replace('&', "&&"), {}, [&window = window_, path] { window.OpenRecent(path); });
    if (recent->isEmpty())
        recent->addAction("None")->setEnabled(false);
}

void Builder::BuildFile()
{
    QMenu* const file = window_.menuBar()->addMenu("&File");
    QAction* const open =
        Add(file, "&Open...", QKeySequence::Open,
            [&window = window_]
            {
                const QString last = QFileInfo{window.Settings().Recent().value(0)}.path();
                window.Open(QFileDialog::getOpenFileNames(
                    &window, "Open Models", last,
                    "Models (*.obj *.stl *.ply *.gltf *.glb *.3ds *.dae *.x *.off *.fbx *.blend);;All files (*)"));
            });
    QMenu* const recent = file->addMenu("Open &Recent");
    QObject::connect(recent, &QMenu::aboutToShow, &window_, [*this, recent]() mutable { FillRecent(recent); });
    Add(file, "&Built-in Scene", {}, [&window = window_] { window.ShowBuiltInScene(); });
    file->addSeparator();
    QAction* const save = Add(file, "&Save Picture...", Qt::Key_F12,
                              [&window = window_]
                              {
                                  const QString path = QFileDialog::getSaveFileName(&window, "Save Picture",
                                                                                    "picture.png", "PNG (*.png)");
                                  if (!path.isEmpty())
                                      window.SavePicture(path);
                              });
    file->addSeparator();
    Add(file, "&Quit", QKeySequence::Quit, [&window = window_] { window.close(); });
    tools_->addAction(open);
    tools_->addAction(save);
    tools_->addSeparator();
}

void Builder::BuildView()
{
    QMenu* const view = window_.menuBar()->addMenu("&View");
    int number = 1;
    for (const ViewChoice& choice : Views)
        tools_->addAction(AddForView(view, choice.label, static_cast<Qt::Key>(Qt::Key_0 + number++),
                                     [&window = window_, which = choice.view] { window.LookFrom(which); }));
    tools_->addAction(AddForView(view, "Show &All", Qt::Key_F, [&window = window_] { window.LookAtAll(); }));
    view->addSeparator();
    AddChoices(view, Projections);
    view->addSeparator();
    tools_->addSeparator();
    for (QAction* const panel : window_.PanelActions())
    {
        view->addAction(panel);
        tools_->addAction(panel);
    }
}

void Builder::BuildLook()
{
    QMenu* const look = window_.menuBar()->addMenu("&Look");
    for (const ChoiceMenu& menu : Looks)
        AddChoices(look, menu);
    look->addSeparator();
    Add(look, "Background &Colour...", {},
        [&window = window_]
        {
            const std::int32_t now = window.View().BackColor();
            const QColor color = QColorDialog::getColor({now & 255, now >> 8 & 255, now >> 16 & 255}, &window);
            if (color.isValid())
                window.SetProperty("BackColor", color.blue() * 65536 + color.green() * 256 + color.red());
        });
    Add(look, "Background &Picture...", {},
        [&window = window_]
        {
            const QString path = QFileDialog::getOpenFileName(&window, "Background Picture", {},
                                                              "Pictures (*.png *.jpg *.jpeg *.bmp);;All files (*)");
            if (!path.isEmpty())
                window.SetBackgroundPicture(path);
        });
    Add(look, "&No Background Picture", {}, [&window = window_] { window.SetBackgroundPicture({}); });
}

void Builder::BuildNavigate()
{
    QMenu* const navigate = window_.menuBar()->addMenu("&Navigate");
    for (const Switch& control : NavControls)
        AddSwitch(navigate, control);
    navigate->addSeparator();
    QAction* const fly = Add(navigate, "&Fly", Qt::Key_F8, [&window = window_](bool on) { window.SetFlying(on); });
    fly->setCheckable(true);
    fly->setChecked(window_.IsFlying());
    AddSwitch(navigate, {"&Stop at Obstacles", "CollisionDetection"});
    tools_->addAction(fly);
}

void ShowNavigationHelp(MainWindow& window)
{
    auto* const dialog = new QDialog{&window};
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setObjectName("navigationHelp");
    dialog->setWindowTitle("How to Move About");
    auto* const layout = new QVBoxLayout{dialog};
    layout->addWidget(new QLabel{NavigationHelp(window.View().viewport()), dialog});
    layout->setSizeConstraint(QLayout::SetFixedSize);
    dialog->show();
}

void Builder::BuildHelp()
{
    QMenu* const help = window_.menuBar()->addMenu("&Help");
    Add(help, "&How to Move About", QKeySequence::HelpContents, [&window = window_] { ShowNavigationHelp(window); });
    Add(help, "&About Lumora Viewport...", {}, [&window = window_] { window.View().ShowAboutBox(); })
        ->setObjectName("about");
}

} // namespace

void BuildMenus(MainWindow& window)
{
    Builder builder{window};
    builder.BuildFile();
    builder.BuildView();
    builder.BuildLook();
    builder.BuildNavigate();
    builder.BuildHelp();
}

} // namespace lumora::viewer
