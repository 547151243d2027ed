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

enum class Fog
{
    None,
    Always,
    AsStateSays, ///< asked for each vector: beside a texture's cost a loop of its own is not worth its code
};

/// A value at corner 0, and how much more corners 1 and 2 have.
struct Attribute
{
    float base, toSecond, toThird;

    void Set(float a, float b, float c)
    {
        base = a;
        toSecond = b - a;
        toThird = c - a;
    }
};

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

/// What a primitive's pixels interpolate. Only what its state uses is filled.
struct Attributes
{
    Attribute depth, inverseW;
    float secondW, thirdW; ///< 1 / w of corners 1 and 2
    ColorAttributes color, highlight;
    Attribute u, v, eyeDepth;
    // How the weights of corners 1 and 2 change per pixel to the right and down.
    float secondPerX, secondPerY, thirdPerX, thirdPerY;
};

/// Weights of corners 1 and 2, and 1 / (their 1 / w) for derivatives.
struct Weights
{
    Floats second, third, w;
};

template<Interpolation P>
LANES_INLINE Floats At(const Attribute& a, const Weights& weights)
{
    if constexpr (P == Interpolation::Constant)
        return Splat(a.base);
    else
        return Splat(a.base) + weights.second * Splat(a.toSecond) + weights.third * Splat(a.toThird);
}

template<Interpolation P>
LANES_INLINE Weights InSpace(const Attributes& a, Floats second, Floats third)
{
    if constexpr (P != Interpolation::Perspective)
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
LANES_INLINE Texel Blend(const Texel& a, const Texel& b, Floats t)
{
    return {Blend(a.red, b.red, t), Blend(a.green, b.green, t), Blend(a.blue, b.blue, t), Blend(a.alpha, b.alpha, t)};
}

/// A mip level for each lane.
struct LevelLanes
{
    Ints offset, width, height;
};

LANES_INLINE Texel FetchTexel(const MipChain& texture, const LevelLanes& level, Ints x, Ints y)
{
    const Ints argb = Gather(texture.texels.data(), level.offset + y * level.width + x);
    const Ints byte = Splat(0xFF);
    return {ToFloats(ShiftedRight<16>(argb) & byte), ToFloats(ShiftedRight<8>(argb) & byte), ToFloats(argb & byte),
            ToFloats(ShiftedRight<24>(argb) & byte)};
}

LANES_INLINE Ints WithinSide(Ints index, Ints side)
{
    return Greatest(Least(index, side - Splat(1)), Splat(0));
}

LANES_INLINE Texel SampleNearest(const MipChain& texture, const LevelLanes& level, Floats u, Floats v)
{
    const Ints x = WithinSide(Truncated(u * ToFloats(level.width)), level.width);
    const Ints y = WithinSide(Truncated(v * ToFloats(level.height)), level.height);
    return FetchTexel(texture, level, x, y);
}

/// The two texel numbers around a place, wrapped, and how far the place is from the first.
LANES_INLINE Floats Neighbours(Floats place, Ints side, Ints& first, Ints& second)
{
    const Floats shifted = place - Splat(0.5F);
    const Floats low = RoundedDown(shifted);
    first = Truncated(low);
    second = first + Splat(1);
    second = WithinSide(Choose(IsLess(second, side), second, Splat(0)), side);
    first = WithinSide(Choose(IsLess(first, Splat(0)), side - Splat(1), first), side);
    return shifted - low;
}

LANES_INLINE Texel SampleLinear(const MipChain& texture, const LevelLanes& level, Floats u, Floats v)
{
    Ints left, right, top, bottom;
    const Floats alongX = Neighbours(u * ToFloats(level.width), level.width, left, right);
    const Floats alongY = Neighbours(v * ToFloats(level.height), level.height, top, bottom);
    const Texel upper = Blend(FetchTexel(texture, level, left, top), FetchTexel(texture, level, right, top), alongX);
    const Texel lower =
        Blend(FetchTexel(texture, level, left, bottom), FetchTexel(texture, level, right, bottom), alongX);
    return Blend(upper, lower, alongY);
}

template<bool IsLinear>
LANES_INLINE Texel SampleLevel(const MipChain& texture, Ints number, Floats u, Floats v)
{
    const LevelLanes level{Gather(texture.offset, number), Gather(texture.width, number),
                           Gather(texture.height, number)};
    if constexpr (IsLinear)
        return SampleLinear(texture, level, u, v);
    else
        return SampleNearest(texture, level, u, v);
}

/// The mip level, from the derivatives of the texture coordinates.
LANES_INLINE Floats LevelOf(const MipChain& texture, const Attributes& a, const Weights& weights)
{
    const auto square = [&](float secondPer, float thirdPer) LANES_LAMBDA
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
    const Floats longest = Greatest(square(a.secondPerX, a.thirdPerX), square(a.secondPerY, a.thirdPerY));
    const Floats level = Splat(0.5F) * Log2(Least(Greatest(longest, Splat(1.0F)), Splat(1.0e30F)));
    return Least(Greatest(level, Splat(0.0F)), Splat(static_cast<float>(texture.levelCount - 1)));
}

// Textures are sampled by a call: beside eight or more gathers it costs nothing, and each state's loop stays small.
template<Surface S>
LANES_NOINLINE void Sample(Texel& result, const MipChain& texture, const Attributes& a, const Weights& weights)
{
    constexpr bool IsLinear = S == Surface::Linear || S == Surface::MipLinear || S == Surface::LinearMipLinear;
    const Floats placeU = At<Interpolation::Perspective>(a.u, weights);
    const Floats placeV = At<Interpolation::Perspective>(a.v, weights);
    const Floats u = placeU - RoundedDown(placeU);
    const Floats v = placeV - RoundedDown(placeV);
    if constexpr (S == Surface::Nearest || S == Surface::Linear)
    {
        const LevelLanes level{Splat(0), Splat(texture.width[0]), Splat(texture.height[0])};
        if constexpr (IsLinear)
            result = SampleLinear(texture, level, u, v);
        else
            result = SampleNearest(texture, level, u, v);
    }
    else
    {
        const Floats level = LevelOf(texture, a, weights);
        if constexpr (S == Surface::MipNearest || S == Surface::MipLinear)
        {
            result = SampleLevel<IsLinear>(texture, Truncated(level + Splat(0.5F)), u, v);
            return;
        }
        const Ints finer = Truncated(level);
        const Ints coarser = Least(finer + Splat(1), Splat(texture.levelCount - 1));
        result = Blend(SampleLevel<IsLinear>(texture, finer, u, v), SampleLevel<IsLinear>(texture, coarser, u, v),
                       level - ToFloats(finer));
    }
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

/// The lanes of `mask` that are drawn after all, and their pixels. `below` is what is there, `rank` the pixels' places
/// in the stipple.
template<Surface S, Blending B, Fog F, Interpolation P>
LANES_INLINE Mask ShadePixels(const DrawState& state, const Attributes& a, Floats second, Floats third, Mask mask,
                              Ints below, Floats rank, Ints& pixels)
{
    const Weights weights = InSpace<P>(a, second, third);
    Floats red = At<P>(a.color.Channel(0), weights);
    Floats green = At<P>(a.color.Channel(1), weights);
    Floats blue = At<P>(a.color.Channel(2), weights);
    Floats alpha = Splat(1.0F);
    if constexpr (B != Blending::Opaque)
        alpha = At<P>(a.color.Channel(3), weights);
    if constexpr (S != Surface::Plain)
    {
        Texel texel;
        Sample<S>(texel, *state.texture, a, weights);
        red = Limited(texel.red * red + At<P>(a.highlight.Channel(0), weights));
        green = Limited(texel.green * green + At<P>(a.highlight.Channel(1), weights));
        blue = Limited(texel.blue * blue + At<P>(a.highlight.Channel(2), weights));
        if constexpr (B != Blending::Opaque)
            alpha = alpha * texel.alpha * Splat(1.0F / 255.0F);
    }
    if constexpr (B == Blending::Stippled)
    {
        mask = Both(mask, IsLess(rank, alpha * Splat(16.0F)));
        if (!IsAny(mask))
            return mask;
    }
    if (F == Fog::Always || (F == Fog::AsStateSays && state.hasFog))
    {
        Floats visible = second;
        FindVisiblePart(visible, state.fog, At<P>(a.eyeDepth, weights));
        red = Blend(Splat(state.fog.color.x * 255.0F), red, visible);
        green = Blend(Splat(state.fog.color.y * 255.0F), green, visible);
        blue = Blend(Splat(state.fog.color.z * 255.0F), blue, visible);
    }
    if constexpr (B == Blending::Blended || B == Blending::Veiled)
    {
        const Floats opacity = Clamped01(alpha);
        const Ints byte = Splat(0xFF);
        red = Blend(ToFloats(ShiftedRight<16>(below) & byte), red, opacity);
        green = Blend(ToFloats(ShiftedRight<8>(below) & byte), green, opacity);
        blue = Blend(ToFloats(below & byte), blue, opacity);
    }
    if constexpr (F != Fog::None || B == Blending::Blended || B == Blending::Veiled)
    {
        red = Limited(red);
        green = Limited(green);
        blue = Limited(blue);
    }
    const Floats half = Splat(0.5F);
    pixels = ShiftedLeft<16>(Truncated(red + half)) | ShiftedLeft<8>(Truncated(green + half)) | Truncated(blue + half);
    return mask;
}
