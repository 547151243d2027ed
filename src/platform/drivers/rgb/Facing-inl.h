// Which triangles are culled, for lines and points. Included inside a namespace, once.

/// Which of a part's triangles from `first` on are culled: by their planes a vector at once, and by WindingRule where
/// that is not sure or there are no planes.
///
/// A plane's value goes through at most six roundings of a relative 2^-24 for each term.
void FindFacing(const Part& part, std::uint32_t first, std::uint32_t count, std::uint8_t* isCulled)
{
    const DrawMesh& mesh = *part.mesh;
    const bool cullsClockwise = part.pass->state.cull == CullMode::Clockwise;
    const WindingRule rule{part.toClip};
    const auto findOne = [&](std::uint32_t i) { isCulled[i] = rule.IsCulled(mesh, first + i, cullsClockwise) ? 1 : 0; };
    std::uint32_t done = 0;
    if (const TrianglePlanes* planes = part.planes)
    {
        const double largest = std::max(std::max(std::abs(rule.eye.x), std::abs(rule.eye.y)),
                                        std::max(std::abs(rule.eye.z), std::abs(rule.weight)));
        const auto scaled = [=](double number) { return Splat(static_cast<float>(number / largest)); };
        const Floats eye[4] = {scaled(rule.eye.x), scaled(rule.eye.y), scaled(rule.eye.z), scaled(rule.weight)};
        const Floats zero = Splat(0.0F);
        for (; count - done >= static_cast<std::uint32_t>(LaneCount); done += LaneCount)
        {
            Floats winding = zero;
            Floats size = zero;
            for (int i = 0; i < 4; ++i)
            {
                const Floats term = Load(planes->rows[i].data() + first + done) * eye[i];
                winding = winding + term;
                size = size + Absolute(term);
            }
            const Floats limit = size * Splat(0x1p-20F) + Splat(1.0e-30F);
            const std::uint32_t above = LaneBits(IsLess(limit, winding));
            const std::uint32_t below = LaneBits(IsLess(winding, zero - limit));
            const std::uint32_t culled = cullsClockwise ? below : above;
            for (int lane = 0; lane < LaneCount; ++lane)
                isCulled[done + lane] = static_cast<std::uint8_t>(culled >> lane & 1);
            constexpr std::uint32_t All = (1U << LaneCount) - 1;
            for (std::uint32_t unsure = All & ~(above | below); unsure != 0; unsure &= unsure - 1)
                findOne(done + static_cast<std::uint32_t>(std::countr_zero(unsure)));
        }
    }
    for (; done < count; ++done)
        findOne(done);
}
