// Frames: where they stand and where they look, seen from other frames.
#include "base/Faults.h"
#include "platform/scenegraph/frames/Checks.h"
#include "platform/scenegraph/frames/Frame.h"
#include "platform/scenegraph/frames/Rotation.h"

namespace lumora
{

namespace
{

constexpr const char* Source = "Frame";

// Sines below this count as parallel: what a Single can tell apart.
constexpr double ParallelSine = 1e-7;

struct Axes
{
    Double3 direction;
    Double3 up;
};

// `up` made perpendicular to the unit vector `direction`; zero when they are parallel.
Double3 UprightOf(Double3 direction, Double3 up)
{
    const Double3 unit = UnitOf(up);
    const Double3 across = unit - direction * Dot(direction, unit);
    return Length(across) > ParallelSine ? UnitOf(across) : Double3{};
}

// Where a transform looks. An axis that was scaled to nothing is found from the others, as far as they are there.
Axes AxesOf(const Matrix4& transform)
{
    const Double3 x = UnitOf(transform.Row(0));
    const Double3 y = UnitOf(transform.Row(1));
    Double3 z = UnitOf(transform.Row(2));
    if (Dot(z, z) == 0)
        z = UnitOf(Cross(x, y));
    if (Dot(z, z) == 0)
        z = {0, 0, 1};
    for (const Double3 candidate : {y, Cross(z, x), Double3{0, 1, 0}})
        if (const Double3 up = UprightOf(z, candidate); Dot(up, up) > 0)
            return {z, up};
    return {z, UprightOf(z, {0, 0, 1})};
}

void RequireCombineType(CombineType combine)
{
    if (combine != CombineType::Replace && combine != CombineType::Before && combine != CombineType::After)
        RaiseBadValue(Source, "There is no such combine type");
}

Vector ReadOut(Double3 value)
{
    const Vector result = value.ToVector();
    if (!IsFinite(result))
        RaiseBadValue(Source, "The frame lies beyond the range of Singles");
    return result;
}

double HorizontalPart(Double3 v)
{
    return std::hypot(v.x, v.z);
}

// The heading of a look, as an angle about y: straight up or down it is where the head or the feet point.
double HeadingOf(const Axes& axes)
{
    const Double3 d = axes.direction;
    if (HorizontalPart(d) > ParallelSine)
        return std::atan2(d.x, d.z);
    const double sign = d.y > 0 ? -1.0 : 1.0;
    return std::atan2(sign * axes.up.x, sign * axes.up.z);
}

// The look turned about the vertical axis to the heading of `target`.
Axes TurnedSideways(const Axes& axes, Double3 target)
{
    if (HorizontalPart(target) <= ParallelSine)
        return axes;
    const double angle = std::atan2(target.x, target.z) - HeadingOf(axes);
    return {Turned(axes.direction, {0, 1, 0}, angle), Turned(axes.up, {0, 1, 0}, angle)};
}

// The look raised or lowered to the elevation of `target`, its heading kept.
Axes TurnedUpwards(const Axes& axes, Double3 target)
{
    const double heading = HeadingOf(axes);
    const Double3 level{std::cos(heading), 0, -std::sin(heading)}; // turning about it lowers the look
    const auto elevation = [](Double3 v) { return std::atan2(v.y, HorizontalPart(v)); };
    const double angle = elevation(axes.direction) - elevation(target);
    return {Turned(axes.direction, level, angle), Turned(axes.up, level, angle)};
}

// The look turned to `target` with the head as near to where it was as it goes.
Axes TurnedTowards(const Axes& axes, Double3 target)
{
    if (const Double3 up = UprightOf(target, axes.up); Dot(up, up) > 0)
        return {target, up};
    // Straight along the old up: the head goes where bending over leads it.
    return {target, Dot(target, axes.up) > 0 ? -axes.direction : axes.direction};
}

} // namespace

Frame* Frame::SpaceOf(const std::shared_ptr<Frame>& reference)
{
    if (reference)
        return reference.get();
    Frame& root = RootFrame();
    return &root != this ? &root : nullptr;
}

// Neighbours get the local transform itself, so that what was written relative to a parent is read back unchanged.
Matrix4 Frame::Between(Frame* from, Frame* to)
{
    if (from == to)
        return Matrix4::Identity();
    if (from != nullptr && from->parent_ == to)
        return from->local_;
    const Matrix4 world = from != nullptr ? from->WorldTransform() : Matrix4::Identity();
    if (to == nullptr)
        return world;
    const auto inverse = Inverse(to->WorldTransform());
    if (!inverse)
        RaiseBadValue(Source, "A frame scaled to nothing cannot serve as reference");
    return world * *inverse;
}

Matrix4 Frame::TransformTo(const std::shared_ptr<Frame>& reference)
{
    return Between(this, SpaceOf(reference));
}

void Frame::SetLocal(const Matrix4& local)
{
    if (!IsFinite(local))
        RaiseBadValue(Source, "The frame would leave the range of numbers");
    BeforeChange();
    InvalidateWorld();
    local_ = local;
}

void Frame::SetPosition(const std::shared_ptr<Frame>& reference, float x, float y, float z)
{
    faults::Point("Frame.SetPosition");
    RequireFinite(Source, {x, y, z});
    Matrix4 local = local_;
    local.SetRow(3, TransformPoint({x, y, z}, Between(SpaceOf(reference), parent_)));
    SetLocal(local);
}

Vector Frame::GetPosition(const std::shared_ptr<Frame>& reference)
{
    faults::Point("Frame.GetPosition");
    return ReadOut(TransformTo(reference).Row(3));
}

void Frame::SetOrientation(const std::shared_ptr<Frame>& reference, Vector direction, Vector up)
{
    faults::Point("Frame.SetOrientation");
    RequireFinite(Source, direction);
    RequireFinite(Source, up);
    SetAxes(SpaceOf(reference), direction, up);
}

void Frame::SetAxes(Frame* space, Double3 direction, Double3 up)
{
    const Matrix4 toParent = Between(space, parent_);
    const Double3 z = UnitOf(TransformDirection(direction, toParent));
    const Double3 y = UprightOf(z, TransformDirection(up, toParent));
    if (Dot(z, z) == 0 || Dot(y, y) == 0)
        RaiseBadValue(Source, "The direction is zero, or the up vector is zero or parallel to it");

    const bool mirrored = Dot(Cross(local_.Row(0), local_.Row(1)), local_.Row(2)) < 0;
    const Double3 x = Cross(y, z) * (mirrored ? -1.0 : 1.0);
    Matrix4 local = local_;
    local.SetRow(0, x * Length(local_.Row(0)));
    local.SetRow(1, y * Length(local_.Row(1)));
    local.SetRow(2, z * Length(local_.Row(2)));
    SetLocal(local);
}

Orientation Frame::GetOrientation(const std::shared_ptr<Frame>& reference)
{
    faults::Point("Frame.GetOrientation");
    const Axes axes = AxesOf(TransformTo(reference));
    return {ReadOut(axes.direction), ReadOut(axes.up)};
}

void Frame::LookAt(const std::shared_ptr<Frame>& target, const std::shared_ptr<Frame>& reference,
                   FrameConstraint constraint)
{
    faults::Point("Frame.LookAt");
    RequireObject(Source, target, "The target");
    Frame* space = SpaceOf(reference);
    const Matrix4 here = Between(this, space);
    const Double3 towards = UnitOf(Between(target.get(), space).Row(3) - here.Row(3));
    if (Dot(towards, towards) == 0)
        return;

    const Axes axes = AxesOf(here);
    const auto turned = [&]() -> Axes
    {
        switch (constraint)
        {
        case FrameConstraint::Z:
            return TurnedTowards(axes, towards);
        case FrameConstraint::Y:
            return TurnedUpwards(axes, towards);
        case FrameConstraint::X:
            return TurnedSideways(axes, towards);
        }
        RaiseBadValue(Source, "There is no such constraint");
    }();
    SetAxes(space, turned.direction, turned.up);
}

void Frame::Combine(CombineType combine, const Matrix4& matrix)
{
    RequireCombineType(combine);
    if (combine == CombineType::Replace)
        SetLocal(matrix);
    else
        SetLocal(combine == CombineType::Before ? matrix * local_ : local_ * matrix);
}

void Frame::AddTranslation(CombineType combine, float x, float y, float z)
{
    faults::Point("Frame.AddTranslation");
    RequireFinite(Source, {x, y, z});
    Matrix4 matrix = Matrix4::Identity();
    matrix.SetRow(3, {x, y, z});
    Combine(combine, matrix);
}

void Frame::AddRotation(CombineType combine, Vector axis, float angle)
{
    faults::Point("Frame.AddRotation");
    RequireFinite(Source, axis);
    RequireFinite(Source, {angle});
    RequireCombineType(combine);
    if (axis != Vector{})
        Combine(combine, RotationMatrix(UnitOf(axis), angle));
}

void Frame::AddScale(CombineType combine, float x, float y, float z)
{
    faults::Point("Frame.AddScale");
    RequireFinite(Source, {x, y, z});
    Combine(combine, Matrix4::FromAxes({x, 0, 0}, {0, y, 0}, {0, 0, z}, {}));
}

void Frame::AddTransform(CombineType combine, const Matrix4& matrix)
{
    faults::Point("Frame.AddTransform");
    const auto& m = matrix.m;
    if (!IsFinite(matrix) || m[0][3] != 0 || m[1][3] != 0 || m[2][3] != 0 || m[3][3] != 1)
        RaiseBadValue(Source, "The matrix is not affine");
    Combine(combine, matrix);
}

} // namespace lumora
