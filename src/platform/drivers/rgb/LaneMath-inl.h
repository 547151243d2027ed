// Functions of lanes that no instruction has, from additions, multiplications and divisions alone: the same bytes with
// every instruction set. Included inside a namespace, once.

LANES_INLINE Floats Clamped01(Floats v)
{
    return Least(Greatest(v, Splat(0.0F)), Splat(1.0F)); // NaN becomes 0
}

LANES_INLINE Floats Absolute(Floats v)
{
    return Greatest(v, Splat(0.0F) - v);
}

/// Of numbers above 0 that are not denormal; absolute error below 2e-7 for results near 0.
LANES_INLINE Floats Log2(Floats x)
{
    const Ints bits = BitsOf(x);
    // Mantissa in [sqrt(1/2), sqrt(2)): the series then converges fastest.
    const Ints exponent = ShiftedRight<23>(bits - Splat(0x3F3504F3));
    const Floats m = FloatsOfBits(bits - ShiftedLeft<23>(exponent));
    const Floats t = (m - Splat(1.0F)) / (m + Splat(1.0F));
    const Floats t2 = t * t;
    // 2 / ln 2 * (t + t^3 / 3 + t^5 / 5 + ...)
    Floats series = Splat(0.32059890F);
    series = series * t2 + Splat(0.41219858F);
    series = series * t2 + Splat(0.57707802F);
    series = series * t2 + Splat(0.96179669F);
    series = series * t2 + Splat(2.88539008F);
    return ToFloats(exponent) + t * series;
}

/// Relative error below 3e-7; results below the smallest normal number are that number.
LANES_INLINE Floats Exp2(Floats x)
{
    const Floats limited = Least(Greatest(x, Splat(-126.0F)), Splat(127.0F));
    const Floats whole = RoundedDown(limited + Splat(0.5F));
    const Floats f = limited - whole;
    Floats series = Splat(1.5252734e-5F); // ln 2 ^ k / k!
    series = series * f + Splat(1.5403530e-4F);
    series = series * f + Splat(1.3333558e-3F);
    series = series * f + Splat(9.6181291e-3F);
    series = series * f + Splat(5.5504109e-2F);
    series = series * f + Splat(2.4022651e-1F);
    series = series * f + Splat(6.9314718e-1F);
    series = series * f + Splat(1.0F);
    return series * FloatsOfBits(ShiftedLeft<23>(Truncated(whole) + Splat(127)));
}

/// base ^ exponent for a base in 0..1 and an exponent above 0.
LANES_INLINE Floats Power(Floats base, float exponent)
{
    const Floats power = Exp2(Log2(Greatest(base, Splat(1.0e-30F))) * Splat(exponent));
    return Choose(IsLess(Splat(1.0e-30F), base), power, Splat(0.0F));
}

/// Radians, for a cosine in -1..1; absolute error below 1e-6. The series is Abramowitz and Stegun 4.4.46.
LANES_INLINE Floats ArcCosine(Floats cosine)
{
    const Floats x = Least(Greatest(cosine, Splat(0.0F) - cosine), Splat(1.0F));
    Floats series = Splat(-0.0012624911F);
    series = series * x + Splat(0.0066700901F);
    series = series * x + Splat(-0.0170881256F);
    series = series * x + Splat(0.0308918810F);
    series = series * x + Splat(-0.0501743046F);
    series = series * x + Splat(0.0889789874F);
    series = series * x + Splat(-0.2145988016F);
    series = series * x + Splat(1.5707963050F);
    const Floats angle = SquareRoot(Splat(1.0F) - x) * series;
    return Choose(IsLess(cosine, Splat(0.0F)), Splat(3.14159265F) - angle, angle);
}

struct Triple
{
    Floats x, y, z;
};

LANES_INLINE Floats Dot(const Triple& a, const Triple& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
LANES_INLINE Triple operator+(const Triple& a, const Triple& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
LANES_INLINE Triple operator-(const Triple& a, const Triple& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
LANES_INLINE Triple operator*(const Triple& v, Floats s)
{
    return {v.x * s, v.y * s, v.z * s};
}
LANES_INLINE Triple SplatTriple(const float* v)
{
    return {Splat(v[0]), Splat(v[1]), Splat(v[2])};
}

/// Unit length; a zero vector stays zero.
LANES_INLINE Triple Normalized(const Triple& v)
{
    const Floats square = Dot(v, v);
    const Floats factor = Splat(1.0F) / SquareRoot(square);
    return v * Choose(IsLess(Splat(0.0F), square), factor, Splat(0.0F));
}
