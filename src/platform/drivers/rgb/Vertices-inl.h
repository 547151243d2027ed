// The vertex stage: positions to the screen, colors by the lighting equations, a vector of vertices at once.
// Included inside a namespace, once.

/// LaneCount floats, or fewer followed by zeros.
LANES_INLINE Floats LoadSome(const float* from, std::uint32_t count)
{
    if (count >= static_cast<std::uint32_t>(LaneCount))
        return Load(from);
    float padded[LaneCount]{};
    std::copy_n(from, count, padded);
    return Load(padded);
}
LANES_INLINE Ints LoadSome(const std::uint32_t* from, std::uint32_t count)
{
    if (count >= static_cast<std::uint32_t>(LaneCount))
        return Load(from);
    std::uint32_t padded[LaneCount]{};
    std::copy_n(from, count, padded);
    return Load(padded);
}

/// Where the vector begins that does number `i` of `count` and those after it: the last one is a whole one, too, and
/// does some a second time, where there are enough.
LANES_INLINE std::uint32_t VectorStart(std::uint32_t i, std::uint32_t count)
{
    constexpr auto Lanes = static_cast<std::uint32_t>(LaneCount);
    return count - i >= Lanes || count < Lanes ? i : count - Lanes;
}

/// Interleaves up to LaneCount blocks of four.
template<typename Block>
LANES_INLINE void StoreBlocks(Floats a, Floats b, Floats c, Floats d, Block* to, std::uint32_t count)
{
    static_assert(sizeof(Block) == 4 * sizeof(float));
    float blocks[4 * LaneCount];
    if (count >= static_cast<std::uint32_t>(LaneCount))
    {
        StoreQuads(a, b, c, d, reinterpret_cast<float*>(to));
        return;
    }
    StoreQuads(a, b, c, d, blocks);
    std::memcpy(static_cast<void*>(to), blocks, count * sizeof(Block));
}

/// Columns of a matrix that points (w 1) or directions go through.
struct MatrixLanes
{
    float m[4][4];

    explicit MatrixLanes(const Matrix4& matrix)
    {
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                m[r][c] = static_cast<float>(matrix.m[r][c]);
    }
};

LANES_INLINE Floats PointColumn(const MatrixLanes& matrix, int column, const Triple& p)
{
    return p.x * Splat(matrix.m[0][column]) + p.y * Splat(matrix.m[1][column]) + p.z * Splat(matrix.m[2][column]) +
           Splat(matrix.m[3][column]);
}
LANES_INLINE Floats DirectionColumn(const MatrixLanes& matrix, int column, const Triple& d)
{
    return d.x * Splat(matrix.m[0][column]) + d.y * Splat(matrix.m[1][column]) + d.z * Splat(matrix.m[2][column]);
}

void PlaceVertices(const Part& part, std::uint32_t first, std::uint32_t count, std::uint32_t to, VertexBlocks& blocks)
{
    const DrawMesh& mesh = *part.mesh;
    const PassState& pass = part.pass->state;
    const MatrixLanes toClip{part.toClip};
    const auto depthOf = [&](const Triple& p)
    {
        const auto factor = [&](int row) { return Splat(static_cast<float>(part.toDepth[row])); };
        return p.x * factor(0) + p.y * factor(1) + p.z * factor(2) + factor(3);
    };
    const Floats scaleX = Splat(static_cast<float>(pass.halfWidth * SubPixels));
    const Floats scaleY = Splat(static_cast<float>(-pass.halfHeight * SubPixels));
    const Floats centreX = Splat(static_cast<float>(pass.centreX * SubPixels + 0.5));
    const Floats centreY = Splat(static_cast<float>(pass.centreY * SubPixels + 0.5));
    const Floats limit = Splat(static_cast<float>((GuardBand - 1) * SubPixels));
    const Floats negativeLimit = Splat(static_cast<float>((1 - GuardBand) * SubPixels));
    const Floats zero = Splat(0.0F);
    const bool hasCoordinates =
        part.needsCoordinates && mesh.u.size() >= mesh.x.size() && !mesh.u.empty() && mesh.v.size() >= mesh.x.size();
    for (std::uint32_t i = 0; i < count; i += LaneCount)
    {
        const std::uint32_t at = VectorStart(i, count);
        const std::uint32_t v = first + at;
        const std::uint32_t left = count - at;
        const Triple p{LoadSome(&mesh.x[v], left), LoadSome(&mesh.y[v], left), LoadSome(&mesh.z[v], left)};
        const Floats w = PointColumn(toClip, 3, p);
        const Floats clipZ = PointColumn(toClip, 2, p);
        const Floats inverseW = Splat(1.0F) / w;
        const Floats x = PointColumn(toClip, 0, p) * inverseW * scaleX + centreX;
        const Floats y = PointColumn(toClip, 1, p) * inverseW * scaleY + centreY;
        Mask placed = Both(IsLess(zero, w), Both(IsLessOrEqual(zero, clipZ), IsLessOrEqual(clipZ, w)));
        placed = Both(placed, IsLess(inverseW, Splat(std::numeric_limits<float>::max())));
        placed = Both(placed, Both(IsLess(x, limit), IsLess(negativeLimit, x)));
        placed = Both(placed, Both(IsLess(y, limit), IsLess(negativeLimit, y)));
        const Ints snappedX = Choose(placed, Truncated(RoundedDown(Choose(placed, x, zero))), Splat(NotPlaced));
        const Ints snappedY = Truncated(RoundedDown(Choose(placed, y, zero)));
        StoreBlocks(FloatsOfBits(snappedX), FloatsOfBits(snappedY), Clamped01(clipZ * inverseW), inverseW,
                    blocks.positions.Data() + to + at, left);
        if (!part.needsCoordinates)
            continue;
        StoreBlocks(hasCoordinates ? LoadSome(&mesh.u[v], left) : zero,
                    hasCoordinates ? LoadSome(&mesh.v[v], left) : zero, depthOf(p), zero,
                    blocks.coordinates.Data() + to + at, left);
    }
}

/// Light as it adds up at a vector of points.
struct Received
{
    Triple diffuse;
    Triple highlight;
};

/// What one light sends to the points: the way to it, and how much of it arrives.
LANES_INLINE Floats ArrivingStrength(const LightValues& light, const Triple& position, Triple& toLight)
{
    if (light.kind == LightKind::Directional)
    {
        toLight = SplatTriple(light.toLight);
        return Splat(1.0F);
    }
    const Triple way = SplatTriple(light.position) - position;
    const Floats distance = SquareRoot(Dot(way, way));
    toLight = Normalized(way);
    const Floats divisor = Splat(light.constantAttenuation) + Splat(light.linearAttenuation) * distance +
                           Splat(light.quadraticAttenuation) * distance * distance;
    Floats strength = Choose(IsLess(Splat(0.0F), divisor), Splat(1.0F) / divisor, Splat(1.0F));
    strength = Choose(IsLessOrEqual(distance, Splat(light.range)), strength, Splat(0.0F));
    if (light.kind != LightKind::Spot)
        return strength;
    const Floats angle = ArcCosine(Dot(SplatTriple(light.toLight), toLight));
    const Floats umbra = Splat(light.halfUmbra);
    const Floats penumbra = Splat(light.halfPenumbra);
    Floats spot = (penumbra - angle) / (penumbra - umbra);
    spot = Choose(IsLess(angle, penumbra), spot, Splat(0.0F));
    spot = Choose(IsLessOrEqual(angle, umbra), Splat(1.0F), spot);
    return strength * spot;
}

LANES_INLINE void ReceiveLight(const LightValues& light, const Triple& position, const Triple& normal,
                               const Triple& toEye, float power, Received& received)
{
    const Triple color = SplatTriple(light.color);
    if (light.kind == LightKind::Ambient)
    {
        received.diffuse = received.diffuse + color;
        return;
    }
    Triple toLight;
    const Floats strength = ArrivingStrength(light, position, toLight);
    const Floats incidence = Dot(normal, toLight);
    const Mask lit = IsLess(Splat(0.0F), incidence);
    received.diffuse = received.diffuse + color * Choose(lit, strength * incidence, Splat(0.0F));
    if (!(power > 0))
        return;
    const Floats mirrored = Greatest(Dot(normal, Normalized(toLight + toEye)), Splat(0.0F));
    const Floats shine = strength * Power(Least(mirrored, Splat(1.0F)), power);
    received.highlight = received.highlight + color * Choose(lit, shine, Splat(0.0F));
}

/// What is the same for all points that are lit together.
struct LightingJob
{
    const Part& part;
    MatrixLanes toWorld;
    MatrixLanes normals;
    float eye[3];
    float againstView[3];
    bool eyeIsNear;

    explicit LightingJob(const Part& lit)
        : part(lit), toWorld(*lit.world), normals(lit.isLit ? NormalsOf(*lit.world) : Matrix4{}),
          eyeIsNear(lit.pass->state.viewDependentSpecular && !lit.pass->state.orthographic)
    {
        const Vector from = lit.pass->state.eye.ToVector();
        const Vector view = lit.pass->state.viewDirection.ToVector();
        eye[0] = from.x, eye[1] = from.y, eye[2] = from.z;
        againstView[0] = -view.x, againstView[1] = -view.y, againstView[2] = -view.z;
    }
};

/// Lights up to LaneCount points and stores their blocks.
LANES_INLINE void LightPoints(const LightingJob& job, const Triple& meshPosition, const Triple& meshNormal, Ints argb,
                              VertexBlocks& blocks, std::uint32_t to, std::uint32_t count)
{
    const Floats full = Splat(255.0F);
    const Triple color{ByteAt<2>(argb) / full, ByteAt<1>(argb) / full, ByteAt<0>(argb) / full};
    const Floats zero = Splat(0.0F);
    Triple diffuse = color;
    Triple highlight{zero, zero, zero};
    if (job.part.isLit)
    {
        const Triple position{PointColumn(job.toWorld, 0, meshPosition), PointColumn(job.toWorld, 1, meshPosition),
                              PointColumn(job.toWorld, 2, meshPosition)};
        const Triple normal =
            Normalized({DirectionColumn(job.normals, 0, meshNormal), DirectionColumn(job.normals, 1, meshNormal),
                        DirectionColumn(job.normals, 2, meshNormal)});
        const Triple toEye = job.eyeIsNear ? Normalized(SplatTriple(job.eye) - position) : SplatTriple(job.againstView);
        Received received{{zero, zero, zero}, {zero, zero, zero}};
        for (const LightValues& light : job.part.pass->lights)
            ReceiveLight(light, position, normal, toEye, job.part.material->power, received);
        const SurfaceMaterial& m = *job.part.material;
        diffuse = {Clamped01(Splat(m.emissive.x) + color.x * received.diffuse.x),
                   Clamped01(Splat(m.emissive.y) + color.y * received.diffuse.y),
                   Clamped01(Splat(m.emissive.z) + color.z * received.diffuse.z)};
        highlight = {Clamped01(Splat(m.specular.x) * received.highlight.x),
                     Clamped01(Splat(m.specular.y) * received.highlight.y),
                     Clamped01(Splat(m.specular.z) * received.highlight.z)};
    }
    if (job.part.splitsHighlight)
        StoreBlocks(highlight.x, highlight.y, highlight.z, zero, blocks.highlights.Data() + to, count);
    else
        diffuse = {Clamped01(diffuse.x + highlight.x), Clamped01(diffuse.y + highlight.y),
                   Clamped01(diffuse.z + highlight.z)};
    StoreBlocks(diffuse.x, diffuse.y, diffuse.z, ByteAt<3>(argb) / full, blocks.colors.Data() + to, count);
}

void LightVertices(const Part& part, std::uint32_t first, std::uint32_t count, std::uint32_t to, VertexBlocks& blocks)
{
    const DrawMesh& mesh = *part.mesh;
    const LightingJob job{part};
    for (std::uint32_t i = 0; i < count; i += LaneCount)
    {
        const std::uint32_t at = VectorStart(i, count);
        const std::uint32_t v = first + at;
        const std::uint32_t left = count - at;
        LightPoints(
            job, {LoadSome(&mesh.x[v], left), LoadSome(&mesh.y[v], left), LoadSome(&mesh.z[v], left)},
            {LoadSome(&mesh.normalX[v], left), LoadSome(&mesh.normalY[v], left), LoadSome(&mesh.normalZ[v], left)},
            LoadSome(&mesh.color[v], left), blocks, to + at, left);
    }
}

/// Faces at their first vertex with their own normal.
void LightFaces(const Part& part, std::uint32_t first, std::uint32_t count, std::uint32_t to, VertexBlocks& blocks)
{
    const DrawMesh& mesh = *part.mesh;
    const LightingJob job{part};
    for (std::uint32_t i = 0; i < count; i += LaneCount)
    {
        const std::uint32_t at = VectorStart(i, count);
        const std::uint32_t face = first + at;
        const std::uint32_t left = count - at;
        const Ints vertex = LoadSome(part.faceVertices + face, left); // a lane without a face reads vertex 0
        LightPoints(job, {Gather(mesh.x.data(), vertex), Gather(mesh.y.data(), vertex), Gather(mesh.z.data(), vertex)},
                    {LoadSome(&mesh.faceNormalX[face], left), LoadSome(&mesh.faceNormalY[face], left),
                     LoadSome(&mesh.faceNormalZ[face], left)},
                    Gather(mesh.color.data(), vertex), blocks, to + at, left);
    }
}
