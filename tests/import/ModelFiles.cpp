// Writers as plain as the formats allow: every triangle has vertices of its own.
#include "import/ModelFiles.h"

#include "base/RuntimeError.h"
#include "geometry/Kernel.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

namespace lumora::test
{

namespace fs = std::filesystem;

namespace
{

std::size_t CountOpenFiles()
{
    const fs::directory_iterator entries("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(fs::begin(entries), fs::end(entries)));
}

std::string Numbers(std::span<const Triangle> triangles, const char* before, const char* separator, const char* end)
{
    std::ostringstream out;
    for (const Triangle& triangle : triangles)
        for (const Vector& v : triangle)
            out << before << v.x << separator << v.y << separator << v.z << end;
    return out.str();
}

std::string Indices(std::size_t triangles, int first, const char* before, const char* separator, const char* end)
{
    std::ostringstream out;
    for (int i = first; i < first + 3 * static_cast<int>(triangles); i += 3)
        out << before << i << separator << i + 1 << separator << i + 2 << end;
    return out.str();
}

std::string Chunk(std::uint16_t id, const std::string& contents)
{
    return Bytes(id) + Bytes(static_cast<std::uint32_t>(contents.size() + 6)) + contents;
}

std::string FloatsOf(std::span<const Triangle> triangles)
{
    std::string bytes;
    for (const Triangle& triangle : triangles)
        for (const Vector& v : triangle)
            bytes += Bytes(v.x) + Bytes(v.y) + Bytes(v.z);
    return bytes;
}

void Visit(const std::shared_ptr<Frame>& frame, auto visit)
{
    for (const std::shared_ptr<Visual>& visual : frame->Visuals())
        visit(*frame, std::dynamic_pointer_cast<MeshBuilder>(visual));
    for (const std::shared_ptr<Frame>& child : frame->Children())
        Visit(child, visit);
}

} // namespace

void ImportTest::SetUp()
{
    openFiles_ = CountOpenFiles();
}

void ImportTest::TearDown()
{
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child process is left";
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(CountOpenFiles(), openFiles_);
}

std::string ImportTest::Write(const std::string& name, const std::string& contents) const
{
    folder_.Write(name, contents);
    return folder_ / name;
}

std::string ImportTest::WriteWorker(const std::string& body) const
{
    const std::string path = Write("worker.sh", "#!/bin/sh\n" + body + "\n");
    fs::permissions(path, fs::perms::owner_all);
    return path;
}

ImportTest::Failure ImportTest::FailureOf(const std::string& path, const ImportOptions& options)
{
    try
    {
        ImportModel(path, options);
    }
    catch (const RuntimeError& failure)
    {
        EXPECT_EQ(failure.Source(), "Import");
        return {failure.Number(), failure.Description()};
    }
    return {};
}

std::vector<Triangle> Tetrahedron()
{
    const Vector o{0, 0, 0};
    const Vector a{2, 0, 0};
    const Vector b{0, 3, 0};
    const Vector c{0, 0, 5};
    return {{o, b, a}, {o, a, c}, {o, c, b}, {a, b, c}};
}

std::string AsObj(std::span<const Triangle> triangles)
{
    return Numbers(triangles, "v ", " ", "\n") + Indices(triangles.size(), 1, "f ", " ", "\n");
}

std::string AsBinaryStl(std::span<const Triangle> triangles)
{
    std::string bytes(80, ' ');
    bytes += Bytes(static_cast<std::uint32_t>(triangles.size()));
    for (const Triangle& t : triangles)
        bytes += std::string(12, '\0') + FloatsOf({&t, 1}) + Bytes(std::uint16_t{0});
    return bytes;
}

std::string AsGltf(std::span<const Triangle> triangles)
{
    std::vector<float> numbers;
    for (const Triangle& triangle : triangles)
        for (const Vector& v : triangle)
            numbers.insert(numbers.end(), {v.x, v.y, v.z});
    return MakeGltf({{"POSITION", 3, numbers}}, R"("scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],"materials":[{}],)");
}

std::string AsGlb(std::span<const Triangle> triangles)
{
    const std::string bytes = FloatsOf(triangles);
    std::string json = AsGltf(triangles);
    json.replace(json.find(",\"uri\""), std::string::npos, "}]}"); // the bytes follow instead
    json.resize((json.size() + 3) / 4 * 4, ' ');
    const auto size = [](std::size_t count) { return Bytes(static_cast<std::uint32_t>(count)); };
    return "glTF" + size(2) + size(12 + 8 + json.size() + 8 + bytes.size()) + size(json.size()) + "JSON" + json +
           size(bytes.size()) + std::string("BIN\0", 4) + bytes;
}

std::string AsX(std::span<const Triangle> triangles)
{
    std::ostringstream out;
    out << "xof 0303txt 0032\nMesh model {\n" << triangles.size() * 3 << ";\n";
    std::string points = Numbers(triangles, "", ";", ";,\n");
    points.replace(points.size() - 3, 3, ";;\n");
    std::string faces = Indices(triangles.size(), 0, "3;", ",", ";,\n");
    faces.replace(faces.size() - 3, 3, ";;\n");
    out << points << triangles.size() << ";\n" << faces << "}\n";
    return out.str();
}

std::string AsCollada(std::span<const Triangle> triangles, const std::string& upAxis)
{
    const std::size_t points = triangles.size() * 3;
    std::ostringstream out;
    out << R"(<?xml version="1.0"?><COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">)"
        << "<asset><up_axis>" << upAxis << "</up_axis></asset><library_geometries>"
        << R"(<geometry id="g"><mesh><source id="p"><float_array id="a" count=")" << points * 3 << R"(">)"
        << Numbers(triangles, "", " ", " ") << R"(</float_array><technique_common><accessor source="#a" count=")"
        << points
        << R"(" stride="3"><param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/>)"
        << R"(</accessor></technique_common></source><vertices id="v"><input semantic="POSITION" source="#p"/></vertices>)"
        << R"(<triangles count=")" << triangles.size() << R"("><input semantic="VERTEX" source="#v" offset="0"/><p>)"
        << Indices(triangles.size(), 0, "", " ", " ")
        << "</p></triangles></mesh></geometry></library_geometries><library_visual_scenes>"
        << R"(<visual_scene id="s"><node id="n"><instance_geometry url="#g"/></node></visual_scene>)"
        << R"(</library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
    return out.str();
}

std::string As3ds(std::span<const Triangle> triangles)
{
    const auto count = static_cast<std::uint16_t>(triangles.size());
    std::string faces = Bytes(count);
    for (std::uint16_t i = 0; i < count; ++i)
        for (int corner = 0; corner < 4; ++corner) // three indices and flags
            faces += Bytes(static_cast<std::uint16_t>(corner < 3 ? i * 3 + corner : 7));
    const std::string points = Bytes(static_cast<std::uint16_t>(count * 3)) + FloatsOf(triangles);
    const std::string mesh = Chunk(0x4100, Chunk(0x4110, points) + Chunk(0x4120, faces));
    return Chunk(0x4D4D, Chunk(0x3D3D, Chunk(0x4000, std::string("model\0", 6) + mesh)));
}

std::string MakeGltf(const std::vector<GltfAttribute>& attributes, const std::string& extra)
{
    std::string bytes;
    std::ostringstream names;
    std::ostringstream accessors;
    std::ostringstream views;
    for (std::size_t i = 0; i < attributes.size(); ++i)
    {
        const GltfAttribute& attribute = attributes[i];
        const char* comma = i == 0 ? "" : ",";
        names << comma << '"' << attribute.name << "\":" << i;
        accessors << comma << R"({"componentType":5126,"bufferView":)" << i << R"(,"type":"VEC)" << attribute.components
                  << R"(","count":)" << attribute.values.size() / static_cast<std::size_t>(attribute.components) << '}';
        views << comma << R"({"buffer":0,"byteOffset":)" << bytes.size() << R"(,"byteLength":)"
              << attribute.values.size() * sizeof(float) << '}';
        for (const float value : attribute.values)
            bytes += Bytes(value);
    }
    std::ostringstream out;
    out << R"({"asset":{"version":"2.0"},"scene":0,)" << extra
        << R"("meshes":[{"name":"part","primitives":[{"material":0,)"
        << R"("attributes":{)" << names.str() << R"(}}]}],"accessors":[)" << accessors.str() << R"(],"bufferViews":[)"
        << views.str() << R"(],"buffers":[{"byteLength":)" << bytes.size()
        << R"(,"uri":"data:application/octet-stream;base64,)" << Base64(bytes) << R"("}]})";
    return out.str();
}

std::string Base64(std::string_view bytes)
{
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3)
    {
        std::uint32_t three = 0;
        for (std::size_t k = 0; k < 3; ++k)
            three = three << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k)
            text += i + k > bytes.size() ? '=' : digits[three >> (18 - 6 * k) & 63];
    }
    return text;
}

std::vector<std::shared_ptr<MeshBuilder>> MeshesOf(const std::shared_ptr<Frame>& frame)
{
    std::vector<std::shared_ptr<MeshBuilder>> meshes;
    Visit(frame,
          [&](Frame&, const std::shared_ptr<MeshBuilder>& mesh)
          {
              if (std::ranges::find(meshes, mesh) == meshes.end())
                  meshes.push_back(mesh);
          });
    return meshes;
}

std::vector<Triangle> TrianglesOf(const std::shared_ptr<Frame>& frame)
{
    std::vector<Triangle> triangles;
    Visit(frame,
          [&](Frame& holder, const std::shared_ptr<MeshBuilder>& mesh)
          {
              const auto placed = [&](Vector v) { return TransformPoint(v, holder.WorldTransform()).ToVector(); };
              for (const Polygon& polygon : PolygonsOf(*mesh))
                  triangles.push_back({placed(polygon.at(0)), placed(polygon.at(1)), placed(polygon.at(2))});
          });
    return triangles;
}

double SignedVolume(std::span<const Triangle> triangles)
{
    double volume = 0;
    for (const Triangle& t : triangles)
        volume += Dot(t[0], Cross(t[1], t[2])) / 6;
    return volume;
}

} // namespace lumora::test
