// What it costs to hand meshes and pixels over the binary interface: as buffers, as texts, and what of it is the
// mesh's own work.
//
// Usage: crossing-times [--side n] [--runs n]; a mesh of n by n vertices, 1000 when absent.
#include "LumoraViewport.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace
{

double Now()
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

LumoraDispatch* Create(const LumoraId& id)
{
    constexpr LumoraId ClassInterface = LUMORA_INTERFACE_CLASS_OBJECT;
    constexpr LumoraId ObjectInterface = LUMORA_INTERFACE_DISPATCH;
    void* creator = nullptr;
    void* object = nullptr;
    if (DllGetClassObject(&id, &ClassInterface, &creator) < 0)
        std::exit(EXIT_FAILURE);
    auto* const maker = static_cast<LumoraClassObject*>(creator);
    maker->functions->CreateInstance(maker, nullptr, &ObjectInterface, &object);
    maker->functions->Release(maker);
    return static_cast<LumoraDispatch*>(object);
}

void Clear(LumoraDispatch* object, LumoraValue& value)
{
    object->functions->ClearValue(object, &value);
}

/// Uses a member; ends the program when it fails.
LumoraValue Use(LumoraDispatch* object, const char* name, std::uint32_t kinds, std::span<LumoraValue> arguments)
{
    std::int32_t id = 0;
    LumoraValue result{};
    if (object->functions->GetIdOfName(object, name, &id, nullptr) >= 0 &&
        object->functions->Invoke(object, id, kinds, arguments.data(), static_cast<std::int32_t>(arguments.size()),
                                  &result, nullptr) >= 0)
        return result;
    std::fprintf(stderr, "%s failed\n", name);
    std::exit(EXIT_FAILURE);
}

LumoraValue Value(LumoraBuffer& buffer)
{
    LumoraValue value{};
    value.type = LumoraNumbers;
    value.value.buffer = &buffer;
    return value;
}

LumoraValue Value(LumoraDispatch* object, const std::string& text)
{
    LumoraValue value{};
    value.type = LumoraString;
    value.value.text = object->functions->MakeTextFromUtf8(object, text.c_str());
    return value;
}

/// A grid of vertices with two triangles a cell.
struct Grid
{
    explicit Grid(int side)
    {
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x)
                vertices.insert(vertices.end(), {static_cast<float>(x), static_cast<float>(y), 0.5F});
        for (int y = 0; y + 1 < side; ++y)
            for (int x = 0; x + 1 < side; ++x)
            {
                const std::int32_t at = y * side + x;
                faces.insert(faces.end(), {3, at, at + side, at + 1, 3, at + 1, at + side, at + side + 1});
            }
        faces.push_back(0);
    }

    std::vector<float> vertices;
    std::vector<std::int32_t> faces;
};

template<typename Number>
std::string TextOf(const std::vector<Number>& numbers)
{
    std::string text;
    for (const Number number : numbers)
        text += std::to_string(number) + ' ';
    return text;
}

template<typename Step>
void Measure(const char* what, int runs, Step&& step)
{
    std::vector<double> times;
    for (int run = 0; run < runs; ++run)
        times.push_back(step());
    std::ranges::sort(times);
    std::printf("%-52s %9.2f %9.2f\n", what, times[times.size() / 2], times.front());
    std::fflush(stdout);
}

/// How long one use of a member of a new mesh takes; `prepare` comes before it and is not counted.
class MeshStand
{
public:
    MeshStand() : factory_(Create(LUMORA_CLASS_RETAINED_MODE)) {}
    ~MeshStand() { factory_->functions->Release(factory_); }
    MeshStand(const MeshStand&) = delete;
    MeshStand& operator=(const MeshStand&) = delete;

    double Add(std::vector<LumoraValue> arguments) const
    {
        LumoraDispatch* const mesh = Use(factory_, "CreateMeshBuilder", LUMORA_METHOD, {}).value.object;
        const double time = TimeOf(mesh, "AddFaces", arguments);
        mesh->functions->Release(mesh);
        return time;
    }

    static double TimeOf(LumoraDispatch* object, const char* name, std::span<LumoraValue> arguments)
    {
        const double start = Now();
        LumoraValue result = Use(object, name, LUMORA_METHOD, arguments);
        const double time = Now() - start;
        Clear(object, result);
        return time;
    }

    LumoraDispatch* Factory() const { return factory_; }

private:
    LumoraDispatch* factory_;
};

void MeasureReading(const MeshStand& stand, std::vector<LumoraValue> arguments, int runs)
{
    LumoraDispatch* const mesh = Use(stand.Factory(), "CreateMeshBuilder", LUMORA_METHOD, {}).value.object;
    Use(mesh, "AddFaces", LUMORA_METHOD, arguments);
    Measure("Vertices, a buffer", runs,
            [&]
            {
                const double start = Now();
                LumoraValue read = Use(mesh, "Vertices", LUMORA_GET, {});
                const double time = Now() - start;
                Clear(mesh, read);
                return time;
            });
    Measure("GetGeometry, buffers", runs,
            [&]
            {
                LumoraValue results[3]{};
                const double time = MeshStand::TimeOf(mesh, "GetGeometry", results);
                for (LumoraValue& value : results)
                    Clear(mesh, value);
                return time;
            });
    mesh->functions->Release(mesh);
}

} // namespace

int main(int count, char** words)
{
    int side = 1000;
    int runs = 9;
    for (int i = 1; i + 1 < count; i += 2)
        (std::strcmp(words[i], "--side") == 0 ? side : runs) = std::max(2, std::atoi(words[i + 1]));
    Grid grid{side};
    LumoraBuffer vertices{grid.vertices.data(), grid.vertices.size(), LumoraElementSingle, 0};
    LumoraBuffer faces{grid.faces.data(), grid.faces.size(), LumoraElementLong, 0};
    std::vector<double> wide(grid.vertices.begin(), grid.vertices.end());
    LumoraBuffer doubles{wide.data(), wide.size(), LumoraElementDouble, 0};
    std::int32_t closing = 0;
    LumoraBuffer none{&closing, 1, LumoraElementLong, 0};

    std::printf("%d by %d vertices, %zu numbers of the face list, ms\n%-52s %9s %9s\n", side, side, grid.faces.size(),
                "", "median", "least");
    const MeshStand stand;
    Measure("AddFaces, vertices alone", runs, [&] { return stand.Add({Value(vertices), {}, Value(none)}); });
    Measure("AddFaces, Doubles alone", runs, [&] { return stand.Add({Value(doubles), {}, Value(none)}); });
    Measure("AddFaces, with triangles", runs, [&] { return stand.Add({Value(vertices), {}, Value(faces)}); });
    MeasureReading(stand, {Value(vertices), {}, Value(faces)}, runs);

    // Texts hold at most 16,777,216 units, so a part of the vertices stands for all.
    const std::size_t part = std::min<std::size_t>(grid.vertices.size(), 300000);
    LumoraValue text = Value(
        stand.Factory(),
        TextOf(std::vector<float>{grid.vertices.begin(), grid.vertices.begin() + static_cast<std::ptrdiff_t>(part)}));
    const std::string label = "AddFaces, " + std::to_string(part / 3) + " vertices as a text";
    Measure(label.c_str(), runs, [&] { return stand.Add({text, {}, Value(none)}); });
    Clear(stand.Factory(), text);
    return EXIT_SUCCESS;
}
