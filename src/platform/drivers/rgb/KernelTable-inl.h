// The table of this instruction set's functions, one entry for each state. Included inside a namespace, last.

template<bool IsTextured>
inline void FillSurface(Kernels& table, Surface surface)
{
    DrawRun(&to)[BlendingCount][2] = table.drawTriangles[static_cast<int>(surface)];
    to[0][0] = DrawTriangles<IsTextured, Blending::Opaque, false>;
    to[0][1] = DrawTriangles<IsTextured, Blending::Opaque, true>;
    to[1][0] = DrawTriangles<IsTextured, Blending::Stippled, false>;
    to[1][1] = DrawTriangles<IsTextured, Blending::Stippled, true>;
    to[2][0] = DrawTriangles<IsTextured, Blending::Blended, false>;
    to[2][1] = DrawTriangles<IsTextured, Blending::Blended, true>;
    to[3][0] = DrawTriangles<IsTextured, Blending::Veiled, false>;
    to[3][1] = DrawTriangles<IsTextured, Blending::Veiled, true>;
}

inline Kernels MakeKernels()
{
    Kernels table{};
    table.place = PlaceVertices;
    table.light = LightVertices;
    table.lightFaces = LightFaces;
    table.findFacing = FindFacing;
    table.cullTriangles = CullTriangles;
    table.cullEdges = CullEdges;
    FillSurface<false>(table, Surface::Plain);
    for (int surface = 1; surface < SurfaceCount; ++surface)
        FillSurface<true>(table, static_cast<Surface>(surface));
    table.drawLines[0][0] = DrawLines<Blending::Opaque, false>;
    table.drawLines[0][1] = DrawLines<Blending::Opaque, true>;
    table.drawLines[1][0] = DrawLines<Blending::Stippled, false>;
    table.drawLines[1][1] = DrawLines<Blending::Stippled, true>;
    table.drawLines[2][0] = DrawLines<Blending::Blended, false>;
    table.drawLines[2][1] = DrawLines<Blending::Blended, true>;
    return table;
}

const Kernels& KernelsOfThisSet()
{
    static const Kernels table = MakeKernels();
    return table;
}
