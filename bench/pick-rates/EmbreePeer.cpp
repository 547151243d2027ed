#include "Peer.h"

#include <algorithm>
#include <chrono>
#include <embree3/rtcore.h>
#include <limits>

namespace lumora::bench
{

namespace
{

class EmbreePeer : public Peer
{
public:
    EmbreePeer() : device_(rtcNewDevice("threads=1,set_affinity=0")) {}
    ~EmbreePeer() override
    {
        Drop();
        rtcReleaseDevice(device_);
    }
    EmbreePeer(const EmbreePeer&) = delete;
    EmbreePeer& operator=(const EmbreePeer&) = delete;

    std::string Name() const override
    {
        return "Embree " + std::to_string(RTC_VERSION_MAJOR) + "." + std::to_string(RTC_VERSION_MINOR);
    }

    double Build(const Mesh& mesh) override
    {
        Drop();
        scene_ = rtcNewScene(device_);
        rtcSetSceneBuildQuality(scene_, RTC_BUILD_QUALITY_MEDIUM);
        const RTCGeometry geometry = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
        auto* vertices = static_cast<float*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, 3 * sizeof(float), mesh->VertexCount()));
        for (std::size_t i = 0; i < mesh->VertexCount(); ++i)
        {
            vertices[3 * i] = mesh->x[i];
            vertices[3 * i + 1] = mesh->y[i];
            vertices[3 * i + 2] = mesh->z[i];
        }
        auto* indices = static_cast<std::uint32_t*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(std::uint32_t), mesh->TriangleCount()));
        std::ranges::copy(mesh->indices, indices);
        const auto start = std::chrono::steady_clock::now();
        rtcCommitGeometry(geometry);
        rtcAttachGeometry(scene_, geometry);
        rtcReleaseGeometry(geometry);
        rtcCommitScene(scene_);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

    float Nearest(const Ray& ray) override
    {
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        RTCRayHit query{};
        query.ray.org_x = ray.origin.x;
        query.ray.org_y = ray.origin.y;
        query.ray.org_z = ray.origin.z;
        query.ray.dir_x = ray.direction.x;
        query.ray.dir_y = ray.direction.y;
        query.ray.dir_z = ray.direction.z;
        query.ray.tfar = std::numeric_limits<float>::infinity();
        query.ray.mask = 0xFFFFFFFF;
        query.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        query.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
        rtcIntersect1(scene_, &context, &query);
        return query.ray.tfar;
    }

private:
    void Drop()
    {
        if (scene_ != nullptr)
            rtcReleaseScene(scene_);
        scene_ = nullptr;
    }

    RTCDevice device_;
    RTCScene scene_ = nullptr;
};

} // namespace

std::unique_ptr<Peer> MakePeer()
{
    return std::make_unique<EmbreePeer>();
}

} // namespace lumora::bench
