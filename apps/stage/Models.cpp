// Model files, alone or in a row.
#include "stage/Models.h"

#include "base/RuntimeError.h"
#include "platform/scenegraph/mesh/MeshBuilder.h"

#include <algorithm>
#include <map>

#ifdef LUMORA_HAS_IMPORT
#include "import/Import.h"
#endif

namespace lumora::stage
{

namespace
{

constexpr Vector Background{0.13F, 0.145F, 0.17F};
constexpr float Gap = 0.15F; // between models of size 1
constexpr float WalkableSize = 10;

#ifdef LUMORA_HAS_IMPORT

std::shared_ptr<Frame> LoadModel(const std::string& path, const LoadOptions& wanted, std::vector<std::string>& warnings)
{
    ImportOptions options;
    options.timeLimit = wanted.timeLimit;
    options.progress = wanted.progress;
    options.workerPath = wanted.workerPath;
    ImportedModel model = ImportModel(path, options);
    warnings.insert(warnings.end(), model.warnings.begin(), model.warnings.end());
    return model.root;
}

#else

std::shared_ptr<Frame> LoadModel(const std::string& path, const LoadOptions& /*wanted*/,
                                 std::vector<std::string>& /*warnings*/)
{
    throw RuntimeError{error::InvalidCall, "Import",
                       "Cannot read \"" + path + "\": this program was built without the reader of model files."};
}

#endif

float LargestSide(const Box& box)
{
    const Vector size = box.maximum - box.minimum;
    return std::max({size.x, size.y, size.z});
}

void ScaleTo(float wanted, Frame& model)
{
    const float size = LargestSide(model.Bounds(model.Parent()));
    if (size > 0)
        model.AddScale(CombineType::After, wanted / size, wanted / size, wanted / size);
}

// Scales a model to `size` and stands it with its left side at `left`; answers where its right side is.
float PlaceInRow(Frame& model, float size, float left)
{
    ScaleTo(size, model);
    const Box box = model.Bounds(model.Parent());
    if (box.IsEmpty())
        return left;
    model.AddTranslation(CombineType::After, left - box.minimum.x, -box.minimum.y, -box.Centre().z);
    return left + box.maximum.x - box.minimum.x;
}

using UseCounts = std::map<const Visual*, int>;

void CountUses(const Frame& frame, UseCounts& uses)
{
    for (const auto& visual : frame.Visuals())
        ++uses[visual.get()];
    for (const auto& child : frame.Children())
        CountUses(*child, uses);
}

bool IsInside(const Box& box, Vector point)
{
    return box.minimum.x <= point.x && point.x <= box.maximum.x && box.minimum.y <= point.y &&
           point.y <= box.maximum.y && box.minimum.z <= point.z && point.z <= box.maximum.z;
}

// Drags orbit about the origin of the frame under the cursor. Files often have it far from what the frame shows: then
// it moves into the middle of that, where nothing else depends on it.
void PutOriginsInside(const std::shared_ptr<Frame>& frame, const UseCounts& uses)
{
    for (const auto& child : frame->Children())
        PutOriginsInside(child, uses);
    if (frame->Visuals().size() != 1 || !frame->Children().empty() || !frame->Lights().empty())
        return;
    const auto mesh = std::dynamic_pointer_cast<MeshBuilder>(frame->Visuals().front());
    if (!mesh || uses.at(mesh.get()) != 1 || mesh->Bounds().IsEmpty() || IsInside(mesh->Bounds(), {}))
        return;
    const Vector centre = mesh->Bounds().Centre();
    mesh->Translate(-centre.x, -centre.y, -centre.z);
    frame->AddTranslation(CombineType::Before, centre.x, centre.y, centre.z);
}

// Views of the control look at the scene's origin.
void PlaceToWalk(const std::shared_ptr<Frame>& root)
{
    Frame& model = *root;
    UseCounts uses;
    CountUses(model, uses);
    PutOriginsInside(root, uses);
    ScaleTo(WalkableSize, model);
    const Box box = model.Bounds(model.Parent());
    if (box.IsEmpty())
        return;
    const Vector centre = box.Centre();
    model.AddTranslation(CombineType::After, -centre.x, -centre.y, -centre.z);
}

bool HasLights(const Frame& frame)
{
    return !frame.Lights().empty() ||
           std::ranges::any_of(frame.Children(), [](const auto& child) { return HasLights(*child); });
}

} // namespace

Stage LoadModels(const std::vector<std::string>& paths, const LoadOptions& options)
{
    Stage stage;
    stage.scene = Frame::Make();
    stage.background = Background;
    const float size = options.arrangement == Arrangement::Walkable ? WalkableSize : 1;
    float right = 0;
    for (const std::string& path : paths)
    {
        if (options.begin)
            options.begin(path);
        const std::shared_ptr<Frame> model = LoadModel(path, options, stage.warnings);
        stage.scene->AddChild(model);
        if (options.arrangement != Arrangement::AsTheyAre && paths.size() > 1)
            right = PlaceInRow(*model, size, right) + Gap * size;
        else if (options.arrangement == Arrangement::Walkable)
            PlaceToWalk(model);
    }
    stage.extent = stage.scene->Bounds(nullptr);
    stage.focus = stage.extent;
    stage.hasLights = HasLights(*stage.scene);
    return stage;
}

} // namespace lumora::stage
