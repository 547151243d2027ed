// The table of this instruction set's functions, one entry for each state. Included inside a namespace, last.

template<Surface S, Blending B>
inline void FillBlending(Kernels& table)
{
    DrawRun(&to)[2] = table.drawTriangles[static_cast<int>(S)][static_cast<int>(B)];
    to[0] = DrawTriangles < S, B, S == Surface::Plain ? Fog::None : Fog::AsStateSays > ;
    to[1] = DrawTriangles < S, B, S == Surface::Plain ? Fog::Always : Fog::AsStateSays > ;
}

template<Surface S>
inline void FillSurface(Kernels& table)
{
    FillBlending<S, Blending::Opaque>(table);
    FillBlending<S, Blending::Stippled>(table);
    FillBlending<S, Blending::Blended>(table);
    FillBlending<S, Blending::Veiled>(table);
}

template<Blending B>
inline void FillLines(Kernels& table)
{
    table.drawLines[static_cast<int>(B)][0] = DrawLines<B, Fog::None>;
    table.drawLines[static_cast<int>(B)][1] = DrawLines<B, Fog::Always>;
}

inline Kernels MakeKernels()
{
    Kernels table{};
    table.place = PlaceVertices;
    table.light = LightVertices;
    table.lightFaces = LightFaces;
    table.cullTriangles = CullTriangles;
    FillSurface<Surface::Plain>(table);
    FillSurface<Surface::Nearest>(table);
    FillSurface<Surface::Linear>(table);
    FillSurface<Surface::MipNearest>(table);
    FillSurface<Surface::MipLinear>(table);
    FillSurface<Surface::LinearMipNearest>(table);
    FillSurface<Surface::LinearMipLinear>(table);
    FillLines<Blending::Opaque>(table);
    FillLines<Blending::Stippled>(table);
    FillLines<Blending::Blended>(table);
    return table;
}

const Kernels& KernelsOfThisSet()
{
    static const Kernels table = MakeKernels();
    return table;
}
