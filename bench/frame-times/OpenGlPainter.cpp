// OpenGL 3.3 core into a framebuffer object. A frame ends with glFinish: the pixels are drawn then, and reading them
// back, which a host would have to do as well, is not counted.
#include "Painters.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>
#include <stdexcept>

namespace lumora::bench
{

namespace
{

constexpr const char* VertexShader = R"(#version 330 core
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec4 color;
uniform mat4 toClip;
uniform mat3 normals;
uniform vec3 toLight;
uniform vec2 light; // ambient, directional
out vec4 shade;
void main()
{
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

class OpenGlPainter final : public Painter
{
public:
    OpenGlPainter()
    {
        OpenContext();
        program_ = glCreateProgram();
        glAttachShader(program_, Compiled(GL_VERTEX_SHADER, VertexShader));
        glAttachShader(program_, Compiled(GL_FRAGMENT_SHADER, FragmentShader));
        glLinkProgram(program_);
        glUseProgram(program_);
        glGenVertexArrays(1, &array_);
        glBindVertexArray(array_);
        glGenBuffers(4, buffers_);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LEQUAL);
        glEnable(GL_CULL_FACE);
        glFrontFace(GL_CW);
        glGenFramebuffers(1, &frame_);
        glGenRenderbuffers(2, planes_);
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
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers_[3]);
        glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(mesh->indices.size() * 4), mesh->indices.data(),
                     GL_STATIC_DRAW);
        indexCount_ = static_cast<GLsizei>(mesh->indices.size());
    }

    void Draw(const View& view) override
    {
        Resize(view.width, view.height);
        SetUniforms(view);
        glClearColor(((Background >> 16) & 0xFF) / 255.0F, ((Background >> 8) & 0xFF) / 255.0F,
                     (Background & 0xFF) / 255.0F, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glDrawElements(GL_TRIANGLES, indexCount_, GL_UNSIGNED_INT, nullptr);
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

    void Resize(int width, int height)
    {
        if (width == width_ && height == height_)
            return;
        width_ = width;
        height_ = height;
        glBindFramebuffer(GL_FRAMEBUFFER, frame_);
        glBindRenderbuffer(GL_RENDERBUFFER, planes_[0]);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, planes_[0]);
        glBindRenderbuffer(GL_RENDERBUFFER, planes_[1]);
        glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, planes_[1]);
        if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
            throw std::runtime_error("the framebuffer is not complete");
        glViewport(0, 0, width, height);
    }

    void SetUniforms(const View& view)
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
        glUniformMatrix4fv(glGetUniformLocation(program_, "toClip"), 1, GL_FALSE, clip);
        glUniformMatrix3fv(glGetUniformLocation(program_, "normals"), 1, GL_FALSE, normals);
        const Vector toLight = (-LightDirection()).ToVector();
        glUniform3f(glGetUniformLocation(program_, "toLight"), toLight.x, toLight.y, toLight.z);
        glUniform2f(glGetUniformLocation(program_, "light"), AmbientPart, LightPart);
    }

    EGLDisplay display_ = EGL_NO_DISPLAY;
    EGLContext context_ = EGL_NO_CONTEXT;
    GLuint program_ = 0;
    GLuint array_ = 0;
    GLuint buffers_[4]{};
    GLuint frame_ = 0;
    GLuint planes_[2]{};
    GLsizei indexCount_ = 0;
    int width_ = 0;
    int height_ = 0;
};

} // namespace

std::unique_ptr<Painter> MakeOpenGlPainter()
{
    return std::make_unique<OpenGlPainter>();
}

} // namespace lumora::bench
