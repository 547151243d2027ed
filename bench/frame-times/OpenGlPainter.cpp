// OpenGL 3.3 core into a framebuffer object. A frame ends with glFinish: the pixels are drawn then, and reading them
// back, which a host would have to do as well, is not counted.
#include "Painters.h"

#include <algorithm>
#include <bit>
#include <epoxy/egl.h>
#include <epoxy/gl.h>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace lumora::bench
{

namespace
{

constexpr const char* VertexShader = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec4 color;
layout(location = 3) in vec2 coordinates;
uniform mat4 toClip;
uniform mat3 normals;
uniform vec3 toLight;
uniform vec2 light; // ambient, directional
out vec4 shade;
out vec2 place;
void main()
{
    place = coordinates;
    gl_Position = toClip * vec4(position, 1.0);
    float part = light.x + light.y * max(0.0, dot(normalize(normals * normal), toLight));
    shade = vec4(clamp(color.rgb * part, 0.0, 1.0), color.a);
})";

constexpr const char* FragmentShader = R"(#version 330 core
in vec4 shade;
out vec4 pixel;
void main()
{
    pixel = shade;
})";

constexpr const char* TexturedShader = R"(#version 330 core
in vec4 shade;
in vec2 place;
uniform sampler2D image;
out vec4 pixel;
void main()
{
    pixel = shade * texture(image, place);
})";

// One triangle over everything.
constexpr const char* CoverShader = R"(#version 330 core
void main()
{
    gl_Position = vec4(gl_VertexID == 2 ? 3.0 : -1.0, gl_VertexID == 1 ? 3.0 : -1.0, 0.0, 1.0);
})";

// Each look at the linear filter between four samples reads all four.
constexpr const char* AverageShader = R"(#version 330 core
uniform sampler2D image;
uniform int samples;
out vec4 pixel;
void main()
{
    vec4 sum = vec4(0.0);
    vec2 first = floor(gl_FragCoord.xy) * float(samples) + 1.0;
    vec2 size = vec2(textureSize(image, 0));
    for (int y = 0; y < samples; y += 2)
        for (int x = 0; x < samples; x += 2)
            sum += textureLod(image, (first + vec2(x, y)) / size, 0.0);
    pixel = sum * (4.0 / float(samples * samples));
})";

GLuint Compiled(GLenum kind, const char* text)
{
    const GLuint shader = glCreateShader(kind);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint isCompiled = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &isCompiled);
    if (isCompiled == 0)
        throw std::runtime_error("a shader does not compile");
    return shader;
}

GLuint Linked(const char* vertices, const char* fragments)
{
    const GLuint program = glCreateProgram();
    glAttachShader(program, Compiled(GL_VERTEX_SHADER, vertices));
    glAttachShader(program, Compiled(GL_FRAGMENT_SHADER, fragments));
    glLinkProgram(program);
    return program;
}

/// A picture to draw into that can be read as a texture.
struct Canvas
{
    GLuint frame = 0;
    GLuint image = 0;
    GLuint depth = 0;

    void Make()
    {
        glGenFramebuffers(1, &frame);
        glGenTextures(1, &image);
        glGenRenderbuffers(1, &depth);
    }

    void Resize(int width, int height) const
    {
        glBindFramebuffer(GL_FRAMEBUFFER, frame);
        glBindTexture(GL_TEXTURE_2D, image);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, nullptr);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, image, 0);
        glBindRenderbuffer(GL_RENDERBUFFER, depth);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
        if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
            throw std::runtime_error("the framebuffer is not complete");
    }
};

class OpenGlPainter final : public Painter
{
public:
    OpenGlPainter()
    {
        OpenContext();
        plain_ = Linked(VertexShader, FragmentShader);
        textured_ = Linked(VertexShader, TexturedShader);
        average_ = Linked(CoverShader, AverageShader);
        glGenTextures(1, &texture_);
        glGenVertexArrays(1, &array_);
        glBindVertexArray(array_);
        glGenBuffers(5, buffers_);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
        glEnable(GL_CULL_FACE);
        glFrontFace(GL_CW);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        drawn_.Make();
        averaged_.Make();
    }

    ~OpenGlPainter() override
    {
        eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(display_, context_);
        eglTerminate(display_);
    }

    void Load(const Mesh& mesh) override
    {
        std::vector<float> positions;
        std::vector<float> normals;
        for (std::size_t v = 0; v < mesh->x.size(); ++v)
        {
            positions.insert(positions.end(), {mesh->x[v], mesh->y[v], mesh->z[v]});
            normals.insert(normals.end(), {mesh->normalX[v], mesh->normalY[v], mesh->normalZ[v]});
        }
        Attribute(0, 3, GL_FLOAT, GL_FALSE, positions.data(), positions.size() * sizeof(float));
        Attribute(1, 3, GL_FLOAT, GL_FALSE, normals.data(), normals.size() * sizeof(float));
        Attribute(2, GL_BGRA, GL_UNSIGNED_BYTE, GL_TRUE, mesh->color.data(), mesh->color.size() * 4);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers_[4]);
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(mesh->indices.size() * 4), mesh->indices.data(),
                     GL_STATIC_DRAW);
        mesh_ = mesh;
        const TextureImage* image = mesh->groups.front().texture.get();
        if (image == nullptr)
            return;
        std::vector<float> coordinates;
        for (std::size_t v = 0; v < mesh->u.size(); ++v)
            coordinates.insert(coordinates.end(), {mesh->u[v], mesh->v[v]});
        Attribute(3, 2, GL_FLOAT, GL_FALSE, coordinates.data(), coordinates.size() * sizeof(float));
        glBindTexture(GL_TEXTURE_2D, texture_);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image->width, image->height, 0, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV,
                     image->pixels.data());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    }

    void Draw(const View& view) override
    {
        Resize(view);
        const int width = view.width * view.samples;
        const int height = view.height * view.samples;
        glBindFramebuffer(GL_FRAMEBUFFER, drawn_.frame);
        glViewport(0, 0, width, height);
        glEnable(GL_DEPTH_TEST);
        glDepthMask(GL_TRUE);
        const GLuint program = view.mode == Mode::Textured ? textured_ : plain_;
        glUseProgram(program);
        glBindTexture(GL_TEXTURE_2D, texture_);
        SetUniforms(view, program);
        glClearColor(((Background >> 16) & 0xFF) / 255.0F, ((Background >> 8) & 0xFF) / 255.0F,
                     (Background & 0xFF) / 255.0F, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        if (view.mode == Mode::Sorted)
        {
            SortTriangles(view);
            glEnable(GL_BLEND);
            glDepthMask(GL_FALSE);
        }
        glPolygonMode(GL_FRONT_AND_BACK, view.mode == Mode::Wireframe ? GL_LINE : GL_FILL);
        glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(mesh_->indices.size()), GL_UNSIGNED_INT, nullptr);
        glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        glDisable(GL_BLEND);
        if (view.samples > 1)
            Average(view);
        glFinish();
    }

    std::vector<std::uint32_t> Pixels(const View& view) override
    {
        const auto width = static_cast<std::size_t>(view.width);
        std::vector<std::uint32_t> upward(width * static_cast<std::size_t>(view.height));
        glReadPixels(0, 0, view.width, view.height, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, upward.data());
        std::vector<std::uint32_t> result;
        for (std::size_t row = static_cast<std::size_t>(view.height); row-- > 0;)
            for (std::size_t x = 0; x < width; ++x)
                result.push_back(upward[row * width + x] & 0xFFFFFF);
        return result;
    }

    std::string Name() const override { return reinterpret_cast<const char*>(glGetString(GL_RENDERER)); }

private:
    void OpenContext()
    {
        display_ = eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        if (display_ == EGL_NO_DISPLAY || eglInitialize(display_, nullptr, nullptr) == EGL_FALSE)
            throw std::runtime_error("there is no EGL display without a surface");
        eglBindAPI(EGL_OPENGL_API);
        const EGLint attributes[] = {
            EGL_CONTEXT_MAJOR_VERSION,           3,       EGL_CONTEXT_MINOR_VERSION, 3, EGL_CONTEXT_OPENGL_PROFILE_MASK,
            EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
        context_ = eglCreateContext(display_, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attributes);
        if (context_ == EGL_NO_CONTEXT ||
            eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, context_) == EGL_FALSE)
            throw std::runtime_error("there is no OpenGL 3.3 core context");
    }

    void Attribute(GLuint number, GLint size, GLenum kind, GLboolean isNormalized, const void* data, std::size_t bytes)
    {
        glBindBuffer(GL_ARRAY_BUFFER, buffers_[number]);
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(bytes), data, GL_STATIC_DRAW);
        glVertexAttribPointer(number, size, kind, isNormalized, 0, nullptr);
        glEnableVertexAttribArray(number);
    }

    void Resize(const View& view)
    {
        if (view.width == width_ && view.height == height_ && view.samples == samples_)
            return;
        width_ = view.width;
        height_ = view.height;
        samples_ = view.samples;
        drawn_.Resize(width_ * samples_, height_ * samples_);
        averaged_.Resize(width_, height_);
        glBindFramebuffer(GL_FRAMEBUFFER, drawn_.frame);
    }

    /// The drawn picture into the small one, which stays bound: it is what Pixels reads.
    void Average(const View& view)
    {
        glBindFramebuffer(GL_FRAMEBUFFER, averaged_.frame);
        glViewport(0, 0, view.width, view.height);
        glDisable(GL_DEPTH_TEST);
        glUseProgram(average_);
        glUniform1i(glGetUniformLocation(average_, "samples"), view.samples);
        glBindTexture(GL_TEXTURE_2D, drawn_.image);
        glDrawArrays(GL_TRIANGLES, 0, 3);
    }

    /// Farthest first by the corners' mean depth, by a radix sort, as an application would.
    void SortTriangles(const View& view)
    {
        const Matrix4 world = view.World();
        const auto count = static_cast<std::uint32_t>(mesh_->indices.size() / 3);
        depths_.clear();
        for (std::size_t v = 0; v < mesh_->x.size(); ++v)
            depths_.push_back(static_cast<float>(mesh_->x[v] * world.m[0][2] + mesh_->y[v] * world.m[1][2] +
                                                 mesh_->z[v] * world.m[2][2] + world.m[3][2]));
        keys_.resize(count);
        for (std::uint32_t i = 0; i < count; ++i)
        {
            const std::uint32_t* corners = mesh_->indices.data() + 3 * std::size_t{i};
            const float depth = depths_[corners[0]] + depths_[corners[1]] + depths_[corners[2]];
            keys_[i] = {~std::bit_cast<std::uint32_t>(std::max(depth, 0.0F)), i};
        }
        sortSpace_.resize(count);
        for (int shift = 0; shift < 32; shift += 11)
        {
            std::uint32_t starts[2049] = {};
            for (const auto& [key, triangle] : keys_)
                ++starts[(key >> shift & 2047) + 1];
            std::partial_sum(std::begin(starts), std::end(starts), std::begin(starts));
            for (const auto& pair : keys_)
                sortSpace_[starts[pair.first >> shift & 2047]++] = pair;
            keys_.swap(sortSpace_);
        }
        sortedIndices_.clear();
        for (const auto& [key, triangle] : keys_)
            for (int corner = 0; corner < 3; ++corner)
                sortedIndices_.push_back(mesh_->indices[3 * std::size_t{triangle} + static_cast<std::size_t>(corner)]);
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(sortedIndices_.size() * 4), sortedIndices_.data(),
                     GL_STREAM_DRAW);
    }

    static void SetUniforms(const View& view, GLuint program)
    {
        const Matrix4 world = view.World();
        Matrix4 projection = Projection(view.width, view.height);
        // OpenGL's depth goes from -1 to 1.
        for (int row = 0; row < 4; ++row)
            projection.m[row][2] = 2 * projection.m[row][2] - projection.m[row][3];
        const Matrix4 toClip = world * projection;
        float clip[16];
        float normals[9];
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column)
                clip[4 * row + column] = static_cast<float>(toClip.m[row][column]);
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 3; ++column)
                normals[3 * row + column] = static_cast<float>(world.m[row][column]);
        glUniformMatrix4fv(glGetUniformLocation(program, "toClip"), 1, GL_FALSE, clip);
        glUniformMatrix3fv(glGetUniformLocation(program, "normals"), 1, GL_FALSE, normals);
        const Vector toLight = (-LightDirection()).ToVector();
        glUniform3f(glGetUniformLocation(program, "toLight"), toLight.x, toLight.y, toLight.z);
        glUniform2f(glGetUniformLocation(program, "light"), AmbientPart, LightPart);
    }

    EGLDisplay display_ = EGL_NO_DISPLAY;
    EGLContext context_ = EGL_NO_CONTEXT;
    GLuint plain_ = 0;
    GLuint textured_ = 0;
    GLuint average_ = 0;
    GLuint texture_ = 0;
    GLuint array_ = 0;
    GLuint buffers_[5]{};
    Canvas drawn_;
    Canvas averaged_;
    Mesh mesh_;
    int width_ = 0;
    int height_ = 0;
    int samples_ = 0;
    // Work space of SortTriangles.
    std::vector<float> depths_;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> keys_, sortSpace_;
    std::vector<std::uint32_t> sortedIndices_;
};

} // namespace

std::unique_ptr<Painter> MakeOpenGlPainter()
{
    return std::make_unique<OpenGlPainter>();
}

} // namespace lumora::bench
