#include "Peer.h"

#include <limits>

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace lumora::bench
{

namespace
{

constexpr float Nothing = std::numeric_limits<float>::infinity();

// The vector code is written for any type that computes like a number.
template<typename T>
struct Three
{
    T x, y, z;
    friend Three operator-(const Three& a, const Three& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
};

template<typename T>
inline __attribute__((always_inline)) T DotOf(const Three<T>& a, const Three<T>& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

template<typename T>
inline __attribute__((always_inline)) Three<T> CrossOf(const Three<T>& a, const Three<T>& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

float One(const DrawMesh& mesh, const Ray& ray, std::size_t triangle, float nearest)
{
    using V = Three<float>;
    const std::uint32_t* corner = &mesh.indices[3 * triangle];
    const auto at = [&](std::uint32_t v) { return V{mesh.x[v], mesh.y[v], mesh.z[v]}; };
    const V d{ray.direction.x, ray.direction.y, ray.direction.z};
    const V a = at(corner[0]);
    const V ab = at(corner[1]) - a;
    const V ac = at(corner[2]) - a;
    const V p = CrossOf(d, ac);
    const float inverse = 1 / DotOf(ab, p);
    const V from = V{ray.origin.x, ray.origin.y, ray.origin.z} - a;
    const float u = DotOf(from, p) * inverse;
    const V q = CrossOf(from, ab);
    const float v = DotOf(d, q) * inverse;
    const float t = DotOf(ac, q) * inverse;
    return u >= 0 && v >= 0 && u + v <= 1 && t >= 0 && t < nearest ? t : nearest;
}

#if defined(__AVX2__)

using Lanes = float __attribute__((vector_size(32)));

float Eight(const DrawMesh& mesh, const Ray& ray)
{
    using V = Three<Lanes>;
    const auto splat = [](Vector v) { return V{_mm256_set1_ps(v.x), _mm256_set1_ps(v.y), _mm256_set1_ps(v.z)}; };
    const V d = splat(ray.direction);
    const V o = splat(ray.origin);
    const __m256i every = _mm256_setr_epi32(0, 3, 6, 9, 12, 15, 18, 21);
    const Lanes zero = _mm256_setzero_ps();
    const Lanes one = _mm256_set1_ps(1);
    Lanes nearest = _mm256_set1_ps(Nothing);
    std::size_t triangle = 0;
    for (; triangle + 8 <= mesh.TriangleCount(); triangle += 8)
    {
        const auto* indices = reinterpret_cast<const int*>(&mesh.indices[3 * triangle]);
        V corner[3];
        for (int i = 0; i < 3; ++i)
        {
            const __m256i vertex = _mm256_i32gather_epi32(indices + i, every, 4);
            corner[i] = {_mm256_i32gather_ps(mesh.x.data(), vertex, 4), _mm256_i32gather_ps(mesh.y.data(), vertex, 4),
                         _mm256_i32gather_ps(mesh.z.data(), vertex, 4)};
        }
        const V ab = corner[1] - corner[0];
        const V ac = corner[2] - corner[0];
        const V p = CrossOf(d, ac);
        const Lanes inverse = one / DotOf(ab, p);
        const V from = o - corner[0];
        const Lanes u = DotOf(from, p) * inverse;
        const V q = CrossOf(from, ab);
        const Lanes v = DotOf(d, q) * inverse;
        const Lanes t = DotOf(ac, q) * inverse;
        Lanes hit = _mm256_and_ps(_mm256_cmp_ps(u, zero, _CMP_GE_OQ), _mm256_cmp_ps(v, zero, _CMP_GE_OQ));
        hit = _mm256_and_ps(hit, _mm256_cmp_ps(u + v, one, _CMP_LE_OQ));
        hit = _mm256_and_ps(hit,
                            _mm256_and_ps(_mm256_cmp_ps(t, zero, _CMP_GE_OQ), _mm256_cmp_ps(t, nearest, _CMP_LT_OQ)));
        nearest = _mm256_blendv_ps(nearest, t, hit);
    }
    float lanes[8];
    _mm256_storeu_ps(lanes, nearest);
    float result = Nothing;
    for (const float lane : lanes)
        result = lane < result ? lane : result;
    for (; triangle < mesh.TriangleCount(); ++triangle)
        result = One(mesh, ray, triangle, result);
    return result;
}

#endif

} // namespace

float PlainSweep(const DrawMesh& mesh, const Ray& ray)
{
#if defined(__AVX2__)
    return Eight(mesh, ray);
#else
    float nearest = Nothing;
    for (std::size_t triangle = 0; triangle < mesh.TriangleCount(); ++triangle)
        nearest = One(mesh, ray, triangle, nearest);
    return nearest;
#endif
}

} // namespace lumora::bench
