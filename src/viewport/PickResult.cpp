#include "viewport/PickResult.h"

namespace lumora
{

namespace
{

constexpr std::int32_t AppDataStep = 100; // multiples of it hide an object from picks

} // namespace

PickChoice ChooseHit(const PickedArray& hits, const PickFilter& filter, PickResult& picked, Screen& screen)
{
    PickChoice choice;
    for (std::int32_t index = 0; hits.HasPick(index); ++index)
    {
        const PickHit& hit = hits.GetPick(index);
        if (!filter.ZeroAppData && hit.visual->GetAppData() % AppDataStep == 0)
            continue;
        picked.PickedMeshbuilder = std::dynamic_pointer_cast<MeshBuilder>(hit.visual);
        if (hit.description.faceIndex < 0)
        {
            screen.MessageBox("got a negative face element", "");
            continue;
        }
        picked.PickedFrame = hit.framePath.back();
        if (picked.PickedMeshbuilder)
            picked.PickedFaceID = hit.description.faceIndex;
        choice.position = hit.description.position;
        const bool solid =
            picked.PickedMeshbuilder && (picked.PickedMeshbuilder->GetQuality() & quality::FillSolid) != 0;
        if (filter.Wireframe || solid)
        {
            choice.accepted = true;
            return choice;
        }
    }
    picked.PickedFrame = nullptr;
    picked.PickedMeshbuilder = nullptr;
    return choice;
}

} // namespace lumora
