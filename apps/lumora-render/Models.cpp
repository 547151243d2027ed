// Model files, alone or in a row.
#include "lumora-render/Models.h"

#include "lumora-render/Progress.h"
#include "platform/automation/RuntimeError.h"

#include <algorithm>
#include <filesystem>

#ifdef LUMORA_HAS_IMPORT
#include "import/Import.h"
#endif

namespace lumora::render
{

namespace
{

constexpr Vector Background{0.13F, 0.145F, 0.17F};
constexpr float Gap = 0.15F; // between models of size 1
constexpr float WalkableSize = 10;

#ifdef LUMORA_HAS_IMPORT

constexpr std::chrono::minutes LoadingLimit{10};

std::shared_ptr<Frame> LoadModel(const std::string& path, std::vector<std::string>& warnings)
{
    Progress progress{"Reading " + std::filesystem::path{path}.filename().string()};
    ImportOptions options;
    options.timeLimit = LoadingLimit;
    options.progress = [&](double fraction)
    {
        progress.Report(fraction);
        return true;
    };
    ImportedModel model = ImportModel(path, options);
    warnings.insert(warnings.end(), model.warnings.begin(), model.warnings.end());
    return model.root;
}

#else

std::shared_ptr<Frame> LoadModel(const std::string& path, std::vector<std::string>& /*warnings*/)
{
    throw RuntimeError{error::InvalidCall, "lumora-render",
                       "Cannot read \"" + path + "\": this program was built without the reader of model files."};
}

#endif

float LargestSide(const Box& box)
{
    const Vector size = box.maximum - box.minimum;
    return std::max({size.x, size.y, size.z});
}

// Scales a model to size 1 and stands it with its left side at `left`; answers where its right side is.
float PlaceInRow(const std::shared_ptr<Frame>& model, float left)
{
    const std::shared_ptr<Frame> parent = model->Parent();
    const float size = LargestSide(model->Bounds(parent));
    if (size > 0)
        model->AddScale(CombineType::After, 1 / size, 1 / size, 1 / size);
    const Box box = model->Bounds(parent);
    if (box.IsEmpty())
        return left;
    model->AddTranslation(CombineType::After, left - box.minimum.x, -box.minimum.y, -box.Centre().z);
    return left + box.maximum.x - box.minimum.x;
}

void ScaleTo(float wanted, const std::shared_ptr<Frame>& model)
{
    const float size = LargestSide(model->Bounds(model->Parent()));
    if (size > 0)
        model->AddScale(CombineType::After, wanted / size, wanted / size, wanted / size);
}

bool HasLights(const Frame& frame)
{
    return !frame.Lights().empty() ||
           std::ranges::any_of(frame.Children(), [](const auto& child) { return HasLights(*child); });
}

} // namespace

Stage LoadModels(const std::vector<std::string>& paths, Arrangement arrangement)
{
    Stage stage;
    stage.scene = Frame::Make();
    stage.background = Background;
    float right = -Gap;
    for (const std::string& path : paths)
    {
        const std::shared_ptr<Frame> model = LoadModel(path, stage.warnings);
        stage.scene->AddChild(model);
        if (arrangement != Arrangement::AsTheyAre && paths.size() > 1)
            right = PlaceInRow(model, right + Gap);
        else if (arrangement == Arrangement::Walkable)
            ScaleTo(WalkableSize, model);
    }
    stage.extent = stage.scene->Bounds(nullptr);
    stage.focus = stage.extent;
    stage.hasLights = HasLights(*stage.scene);
    return stage;
}

} // namespace lumora::render
