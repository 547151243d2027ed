// Scenes to pick in, and a control to move about in them.
#pragma once

#include "Loads.h"
#include "hosts/headless/HostedViewport.h"

#include <memory>
#include <random>
#include <vector>

namespace lumora::bench
{

/// The same triangles as a mesh builder, compiled.
std::shared_ptr<MeshBuilder> BuilderOf(const Mesh& mesh);

/// Small cubes, each a mesh of its own in a frame of its own, spread over a space of 100 around the origin, around
/// which none are.
struct CubeScene
{
    std::shared_ptr<Frame> root;
    std::vector<std::shared_ptr<Frame>> frames;
};
CubeScene Cubes(std::uint32_t count);

/// Unit rays from around the origin through a ball.
std::vector<Ray> RaysThrough(double radius, double from, std::size_t count, std::mt19937& random);

/// A live control in the middle of a scene, with collision detection of 5 samples.
std::unique_ptr<headless::HostedViewport> ControlIn(const std::shared_ptr<Frame>& scene);

} // namespace lumora::bench
