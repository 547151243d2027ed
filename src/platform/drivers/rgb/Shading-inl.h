// From interpolation weights to pixels: texture, highlight, fog and blending, a vector of pixels at once.
// Everything that a state decides is a template argument. Included inside a namespace, once.
//
// Colors are 0..255 here. Lanes that no pixel uses hold anything: no load may depend on them.

enum class Interpolation
{
    Constant,    ///< nothing varies but depth
    Linear,      ///< linear on the screen
    Perspective, ///< linear in space
};

/// A value at corner 0, and how much more corners 1 and 2 have. A number is one for a whole primitive, or one for each
/// lane.
template<typename Number>
struct AttributeOf
{
    Number base, toSecond, toThird;

    void Set(Number a, Number b, Number c)
    {
        base = a;
        toSecond = b - a;
        toThird = c - a;
    }
};

using Attribute = AttributeOf<float>;
using AttributeLanes = AttributeOf<Floats>;

LANES_INLINE Floats Splat(Floats lanes)
{
    return lanes;
}

/// The same for red, green, blue and alpha at once.
struct alignas(16) ColorAttributes
{
    float base[4], toSecond[4], toThird[4];

    /// Red, green and blue are multiplied by `scale`.
    void Set(const ColorBlock& a, const ColorBlock& b, const ColorBlock& c, float scale)
    {
        const float scales[4] = {scale, scale, scale, 1.0F};
        const float first[4] = {a.red, a.green, a.blue, a.alpha};
        const float second[4] = {b.red, b.green, b.blue, b.alpha};
        const float third[4] = {c.red, c.green, c.blue, c.alpha};
        for (int i = 0; i < 4; ++i)
        {
            base[i] = first[i] * scales[i];
            toSecond[i] = second[i] * scales[i] - base[i];
            toThird[i] = third[i] * scales[i] - base[i];
        }
    }

    /// The largest change of a channel from corner 0 to another.
    float Range() const
    {
        float range = 0;
        for (int i = 0; i < 4; ++i)
            range = std::max(range, std::max(std::abs(toSecond[i]), std::abs(toThird[i])));
        return range;
    }
    Attribute Channel(int i) const { return {base[i], toSecond[i], toThird[i]}; }
};

/// How the weights of corners 1 and 2 change per pixel to the right and down.
template<typename Number>
struct WeightSteps
{
    Number secondPerX, secondPerY, thirdPerX, thirdPerY;
};

/// What a primitive's pixels interpolate. Only what its state uses is filled.
struct Attributes
{
    Attribute depth, inverseW;
    float secondW, thirdW; ///< 1 / w of corners 1 and 2
    ColorAttributes color, highlight;
    Attribute u, v, eyeDepth;
    WeightSteps<float> steps;

    Attribute Color(int channel) const { return color.Channel(channel); }
    Attribute Highlight(int channel) const { return highlight.Channel(channel); }
    const WeightSteps<float>& Steps() const { return steps; }
};

/// Weights of corners 1 and 2, and 1 / (their 1 / w) for derivatives.
struct Weights
{
    Floats second, third, w;
};

template<Interpolation P, typename Number>
LANES_INLINE Floats At(const AttributeOf<Number>& a, const Weights& weights)
{
    if constexpr (P == Interpolation::Constant)
        return Splat(a.base);
    else
        return Splat(a.base) + weights.second * Splat(a.toSecond) + weights.third * Splat(a.toThird);
}

template<Interpolation P, typename Values>
LANES_INLINE Weights InSpace(const Values& a, Floats second, Floats third)
{
    if constexpr (P == Interpolation::Constant || P == Interpolation::Linear)
        return {second, third, second};
    const Floats w = Splat(1.0F) / At<Interpolation::Linear>(a.inverseW, {second, third, second});
    return {second * Splat(a.secondW) * w, third * Splat(a.thirdW) * w, w};
}

struct Texel
{
    Floats red, green, blue, alpha;
};

LANES_INLINE Floats Blend(Floats from, Floats to, Floats t)
{
    return from + (to - from) * t;
}

/// A mip level for each lane.
struct LevelLanes
{
    Ints offset, width, height;

    Ints RowStart(Ints y) const { return offset + y * (width + Splat(1)); }
};

LANES_INLINE LevelLanes FinestLevel(const MipChain& texture)
{
    return {Splat(0), Splat(texture.width[0]), Splat(texture.height[0])};
}

/// Its channels. Alpha only where it is needed.
template<bool HasAlpha>
LANES_INLINE Texel Unpacked(Ints argb)
{
    return {ByteAt<2>(argb), ByteAt<1>(argb), ByteAt<0>(argb), HasAlpha ? ByteAt<3>(argb) : Splat(255.0F)};
}

template<bool HasAlpha>
LANES_INLINE Texel Blend(const Texel& a, const Texel& b, Floats t)
{
    return {Blend(a.red, b.red, t), Blend(a.green, b.green, t), Blend(a.blue, b.blue, t),
            HasAlpha ? Blend(a.alpha, b.alpha, t) : a.alpha};
}

LANES_INLINE Ints WithinSide(Ints index, Ints side)
{
    return Greatest(Least(index, side - Splat(1)), Splat(0));
}

/// The place of the texel at u and v, within 0..1.
LANES_INLINE Ints NearestTexel(const LevelLanes& level, Floats u, Floats v)
{
    const Ints x = WithinSide(Truncated(u * ToFloats(level.width)), level.width);
    const Ints y = WithinSide(Truncated(v * ToFloats(level.height)), level.height);
    return level.RowStart(y) + x;
}

template<bool HasAlpha>
LANES_INLINE Texel SampleNearest(const MipChain& texture, const LevelLanes& level, Floats u, Floats v)
{
    return Unpacked<HasAlpha>(Gather(texture.texels.data(), NearestTexel(level, u, v)));
}

/// The texel number before a place, wrapped, and how far the place is from it.
LANES_INLINE Floats Neighbour(Floats place, Ints side, Ints& first)
{
    const Floats shifted = place - Splat(0.5F);
    const Floats low = RoundedDown(shifted);
    first = Truncated(low);
    first = WithinSide(Choose(IsLess(first, Splat(0)), side - Splat(1), first), side);
    return shifted - low;
}

/// Two texels side by side, blended.
template<bool HasAlpha>
LANES_INLINE Texel BlendPair(const MipChain& texture, Ints place, Floats along)
{
    Ints left, right;
    LoadPairs<1>(reinterpret_cast<const std::int32_t*>(texture.texels.data()), place, left, right);
    return Blend<HasAlpha>(Unpacked<HasAlpha>(left), Unpacked<HasAlpha>(right), along);
}

template<bool HasAlpha>
LANES_INLINE Texel SampleLinear(const MipChain& texture, const LevelLanes& level, Floats u, Floats v)
{
    Ints left, top;
    const Floats alongX = Neighbour(u * ToFloats(level.width), level.width, left);
    const Floats alongY = Neighbour(v * ToFloats(level.height), level.height, top);
    const Ints next = top + Splat(1);
    const Ints bottom = Choose(IsLess(next, level.height), next, Splat(0));
    const Texel upper = BlendPair<HasAlpha>(texture, level.RowStart(top) + left, alongX);
    const Texel lower = BlendPair<HasAlpha>(texture, level.RowStart(bottom) + left, alongX);
    return Blend<HasAlpha>(upper, lower, alongY);
}

template<bool IsLinear, bool HasAlpha>
LANES_INLINE Texel SampleLevel(const MipChain& texture, Ints number, Floats u, Floats v)
{
    const LevelLanes level{Gather(texture.offset, number), Gather(texture.width, number),
                           Gather(texture.height, number)};
    if constexpr (IsLinear)
        return SampleLinear<HasAlpha>(texture, level, u, v);
    else
        return SampleNearest<HasAlpha>(texture, level, u, v);
}

/// The mip level, from the derivatives of the texture coordinates.
template<typename Values>
LANES_INLINE Floats LevelOf(const MipChain& texture, const Values& a, const Weights& weights)
{
    const auto square = [&](auto secondPer, auto thirdPer) LANES_LAMBDA
    {
        // Derivative of (weight * 1/w) / (sum of 1/w).
        const Floats change = Splat(secondPer * a.inverseW.toSecond + thirdPer * a.inverseW.toThird);
        const Floats second = (Splat(secondPer * a.secondW) - weights.second * change) * weights.w;
        const Floats third = (Splat(thirdPer * a.thirdW) - weights.third * change) * weights.w;
        const Floats du =
            (second * Splat(a.u.toSecond) + third * Splat(a.u.toThird)) * Splat(static_cast<float>(texture.width[0]));
        const Floats dv =
            (second * Splat(a.v.toSecond) + third * Splat(a.v.toThird)) * Splat(static_cast<float>(texture.height[0]));
        return du * du + dv * dv;
    };
    const auto& steps = a.Steps();
    const Floats longest =
        Greatest(square(steps.secondPerX, steps.thirdPerX), square(steps.secondPerY, steps.thirdPerY));
    const Floats level = Splat(0.5F) * Log2(Least(Greatest(longest, Splat(1.0F)), Splat(1.0e30F)));
    return Least(Greatest(level, Splat(0.0F)), Splat(static_cast<float>(texture.levelCount - 1)));
}

/// Where and how finely a texture is looked at.
struct TexturePlace
{
    Floats u, v; ///< within 0..1
    Floats level;
};

// Textures are sampled by a call: beside eight or more loads it costs nothing, and each state's loop stays small.
template<Surface S, bool HasAlpha>
LANES_NOINLINE void Sample(Texel& result, const MipChain& texture, const TexturePlace& at)
{
    constexpr bool IsLinear = S == Surface::Linear || S == Surface::MipLinear || S == Surface::LinearMipLinear;
    if constexpr (S == Surface::Nearest || S == Surface::Linear)
    {
        const LevelLanes level = FinestLevel(texture);
        if constexpr (IsLinear)
            result = SampleLinear<HasAlpha>(texture, level, at.u, at.v);
        else
            result = SampleNearest<HasAlpha>(texture, level, at.u, at.v);
    }
    else if constexpr (S == Surface::MipNearest || S == Surface::MipLinear)
    {
        result = SampleLevel<IsLinear, HasAlpha>(texture, Truncated(at.level + Splat(0.5F)), at.u, at.v);
    }
    else
    {
        const Ints finer = Truncated(at.level);
        const Ints coarser = Least(finer + Splat(1), Splat(texture.levelCount - 1));
        result =
            Blend<HasAlpha>(SampleLevel<IsLinear, HasAlpha>(texture, finer, at.u, at.v),
                            SampleLevel<IsLinear, HasAlpha>(texture, coarser, at.u, at.v), at.level - ToFloats(finer));
    }
}

using Sampler = void (*)(Texel&, const MipChain&, const TexturePlace&);

/// How a textured state reads its texture.
template<bool HasAlpha>
inline Sampler SamplerOf(Surface surface)
{
    static constexpr Sampler Samplers[SurfaceCount] = {
        nullptr,
        Sample<Surface::Nearest, HasAlpha>,
        Sample<Surface::Linear, HasAlpha>,
        Sample<Surface::MipNearest, HasAlpha>,
        Sample<Surface::MipLinear, HasAlpha>,
        Sample<Surface::LinearMipNearest, HasAlpha>,
        Sample<Surface::LinearMipLinear, HasAlpha>,
    };
    return Samplers[static_cast<int>(surface)];
}

inline bool HasLevels(Surface surface)
{
    return surface != Surface::Nearest && surface != Surface::Linear;
}

template<bool HasAlpha, typename Values>
LANES_INLINE Texel TexelAt(const DrawState& state, const Values& a, const Weights& weights)
{
    const Floats u = At<Interpolation::Perspective>(a.u, weights);
    const Floats v = At<Interpolation::Perspective>(a.v, weights);
    TexturePlace place{u - RoundedDown(u), v - RoundedDown(v), u};
    if (HasLevels(state.surface))
        place.level = LevelOf(*state.texture, a, weights);
    Texel texel;
    SamplerOf<HasAlpha>(state.surface)(texel, *state.texture, place);
    return texel;
}

LANES_NOINLINE void FindVisiblePart(Floats& result, const FogState& fog, Floats depth)
{
    if (fog.mode == FogMode::Linear)
    {
        result =
            Clamped01((Splat(static_cast<float>(fog.end)) - depth) / Splat(static_cast<float>(fog.end - fog.start)));
        return;
    }
    const Floats thickness = depth * Splat(static_cast<float>(fog.density));
    const Floats power = fog.mode == FogMode::Exponential ? thickness : thickness * thickness;
    result = Clamped01(Exp2(power * Splat(-1.44269504F)));
}

LANES_INLINE Floats Limited(Floats channel)
{
    return Least(Greatest(channel, Splat(0.0F)), Splat(255.0F));
}

/// 0..255, but for alpha: 0..1; rounding may take them a little beyond.
struct ColorLanes
{
    Floats red, green, blue, alpha;
};

LANES_INLINE Ints Packed(Floats red, Floats green, Floats blue)
{
    return ShiftedLeft<16>(Truncated(red)) | ShiftedLeft<8>(Truncated(green)) | Truncated(blue);
}

/// The lanes of `mask` that are drawn after all, and their pixels. `below` is what is there, `rank` the pixels' places
/// in the stipple.
template<Blending B>
LANES_INLINE Mask Compose(const ColorLanes& color, Mask mask, Ints below, Floats rank, Ints& pixels)
{
    const Floats half = Splat(0.5F);
    if constexpr (B == Blending::Opaque || B == Blending::Stippled)
    {
        pixels = Packed(color.red + half, color.green + half, color.blue + half);
        return B == Blending::Stippled ? Both(mask, IsLess(rank, color.alpha * Splat(16.0F))) : mask;
    }
    pixels = Packed(Blend(ByteAt<2>(below), color.red, color.alpha) + half,
                    Blend(ByteAt<1>(below), color.green, color.alpha) + half,
                    Blend(ByteAt<0>(below), color.blue, color.alpha) + half);
    return mask;
}

/// A primitive's own color, before it meets what is there.
template<bool IsTextured, Blending B, bool Fog, Interpolation P, typename Values>
LANES_INLINE ColorLanes ShadedColor(const DrawState& state, const Values& a, Floats second, Floats third)
{
    const Weights weights = InSpace<P>(a, second, third);
    ColorLanes c{At<P>(a.Color(0), weights), At<P>(a.Color(1), weights), At<P>(a.Color(2), weights), Splat(1.0F)};
    if constexpr (B != Blending::Opaque)
        c.alpha = At<P>(a.Color(3), weights);
    if constexpr (IsTextured)
    {
        const Texel texel = TexelAt<B != Blending::Opaque>(state, a, weights);
        c.red = texel.red * c.red;
        c.green = texel.green * c.green;
        c.blue = texel.blue * c.blue;
        if (state.hasHighlight)
        {
            c.red = c.red + At<P>(a.Highlight(0), weights);
            c.green = c.green + At<P>(a.Highlight(1), weights);
            c.blue = c.blue + At<P>(a.Highlight(2), weights);
        }
        c = {Limited(c.red), Limited(c.green), Limited(c.blue), c.alpha};
        if constexpr (B != Blending::Opaque)
            c.alpha = c.alpha * texel.alpha * Splat(1.0F / 255.0F);
    }
    if constexpr (Fog)
    {
        Floats visible = second;
        FindVisiblePart(visible, state.fog, At<P>(a.eyeDepth, weights));
        c.red = Limited(Blend(Splat(state.fog.color.x * 255.0F), c.red, visible));
        c.green = Limited(Blend(Splat(state.fog.color.y * 255.0F), c.green, visible));
        c.blue = Limited(Blend(Splat(state.fog.color.z * 255.0F), c.blue, visible));
    }
    return c;
}

/// As Compose, of a primitive's color at the weights of its corners 1 and 2.
template<bool IsTextured, Blending B, bool Fog, Interpolation P, typename Values>
LANES_INLINE Mask ShadePixels(const DrawState& state, const Values& a, Floats second, Floats third, Mask mask,
                              Ints below, Floats rank, Ints& pixels)
{
    return Compose<B>(ShadedColor<IsTextured, B, Fog, P>(state, a, second, third), mask, below, rank, pixels);
}
