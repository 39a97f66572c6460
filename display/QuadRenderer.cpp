#include "QuadRenderer.h"

#include <QOpenGLContext>
#include <QtDebug>

#include <algorithm>
#include <array>
#include <cstdint>

// OpenGL ES has no such format; drivers that offer it take this value.
#ifndef GL_BGR
#define GL_BGR 0x80E0
#endif

namespace {

constexpr int kPosition = 0;
constexpr int kCoordinate = 1;
constexpr int kVerticesPerQuad = 4;

// x, y, depth, texture s, texture t; the logo's rows come bottom up.
constexpr std::array<float, 20> kLogoQuad = {
    -1, -1, -1, 0, 0, //
    1,  -1, -1, 1, 0, //
    1,  1,  -1, 1, 1, //
    -1, 1,  -1, 0, 1, //
};

/// A part of the image, whose rows come top down.
std::array<float, 20> tileQuad(const QRect& tile, int width, int height) {
    const auto across = [width](int x) {
        return 2.0F * static_cast<float>(x) / static_cast<float>(width) - 1;
    };
    const auto up = [height](int y) { return 1 - 2.0F * static_cast<float>(y) / static_cast<float>(height); };
    const float left = across(tile.x()), right = across(tile.x() + tile.width());
    const float top = up(tile.y()), bottom = up(tile.y() + tile.height());
    return {
        left,  top,    0.5F, 0, 0, //
        right, top,    0.5F, 1, 0, //
        right, bottom, 0.5F, 1, 1, //
        left,  bottom, 0.5F, 0, 1, //
    };
}

constexpr char kVertexShader[] = R"(
IN vec3 position;
IN vec2 coordinate;
VERTEX_OUT vec2 texel;
void main() {
    texel = coordinate;
    gl_Position = vec4(position, 1.0);
}
)";

// The logo's transparency lies over white.
constexpr char kLogoShader[] = R"(
FRAGMENT_IN vec2 texel;
uniform sampler2D picture;
DECLARE_RESULT
void main() {
    vec4 color = SAMPLE(picture, texel);
    RESULT = vec4(mix(vec3(1.0), color.rgb, color.a), 1.0);
}
)";

// Nothing but the fetch: software renderers have a short way for that.
constexpr char kImageShader[] = R"(
FRAGMENT_IN vec2 texel;
uniform sampler2D picture;
DECLARE_RESULT
void main() {
    RESULT = SAMPLE(picture, texel);
}
)";

/// What stands before both shaders, so that one source serves every dialect of the shading language.
QByteArray shaderHead(const QOpenGLContext* context) {
    if (context->isOpenGLES()) {
        return "#version 100\nprecision mediump float;\n#define IN attribute\n#define VERTEX_OUT varying\n"
               "#define FRAGMENT_IN varying\n#define SAMPLE texture2D\n#define DECLARE_RESULT\n"
               "#define RESULT gl_FragColor\n";
    }
    if (context->format().version() >= qMakePair(3, 2)) {
        return "#version 150\n#define IN in\n#define VERTEX_OUT out\n#define FRAGMENT_IN in\n"
               "#define SAMPLE texture\n#define DECLARE_RESULT out vec4 result;\n#define RESULT result\n";
    }
    return "#version 110\n#define IN attribute\n#define VERTEX_OUT varying\n#define FRAGMENT_IN varying\n"
           "#define SAMPLE texture2D\n#define DECLARE_RESULT\n#define RESULT gl_FragColor\n";
}

/// Core profiles have no luminance; there red takes its place.
GLenum greyFormat() {
    return QOpenGLContext::currentContext()->format().profile() == QSurfaceFormat::CoreProfile ? GL_RED
                                                                                               : GL_LUMINANCE;
}

GLenum sourceFormat(QuadRenderer::Pixels pixels) {
    return pixels == QuadRenderer::Pixels::Grey ? greyFormat() : GL_BGR;
}

} // namespace

void QuadRenderer::Create(QOpenGLFunctions& gl, const QImage& logo) {
    gl.glGetIntegerv(GL_MAX_TEXTURE_SIZE, &m_maxTextureSide);
    Compile(m_logoProgram, kLogoShader);
    Compile(m_imageProgram, kImageShader);
    m_layout.create(); // not there before OpenGL 3; binding it then does nothing
    m_quads.create();
    FillQuads();
    if (!logo.isNull()) {
        gl.glGenTextures(1, &m_logoTexture);
        gl.glBindTexture(GL_TEXTURE_2D, m_logoTexture);
        gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, logo.width(), logo.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                        logo.constBits());
        gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
        gl.glBindTexture(GL_TEXTURE_2D, 0);
    }
}

void QuadRenderer::Compile(QOpenGLShaderProgram& program, const char* fragmentShader) {
    const QByteArray head = shaderHead(QOpenGLContext::currentContext());
    program.removeAllShaders();
    program.addShaderFromSourceCode(QOpenGLShader::Vertex, head + kVertexShader);
    program.addShaderFromSourceCode(QOpenGLShader::Fragment, head + fragmentShader);
    program.bindAttributeLocation("position", kPosition);
    program.bindAttributeLocation("coordinate", kCoordinate);
    if (!program.link()) {
        qWarning("The image display's shaders do not compile here: %s", qPrintable(program.log()));
    }
}

void QuadRenderer::FillQuads() {
    const QOpenGLVertexArrayObject::Binder layout(&m_layout);
    std::vector<float> corners(kLogoQuad.begin(), kLogoQuad.end());
    for (const Tile& tile : m_tiles) {
        const auto quad = tileQuad(tile.area, m_imageWidth, m_imageHeight);
        corners.insert(corners.end(), quad.begin(), quad.end());
    }
    m_quads.bind();
    m_quads.allocate(corners.data(), static_cast<int>(corners.size() * sizeof(float)));
    m_quads.release();
}

void QuadRenderer::Destroy(QOpenGLFunctions& gl) {
    gl.glDeleteTextures(1, &m_logoTexture);
    m_logoTexture = 0;
    DeleteTiles(gl);
    m_quads.destroy();
    m_layout.destroy();
    m_logoProgram.removeAllShaders();
    m_imageProgram.removeAllShaders();
}

void QuadRenderer::DeleteTiles(QOpenGLFunctions& gl) {
    for (const Tile& tile : m_tiles) {
        gl.glDeleteTextures(1, &tile.texture);
    }
    m_tiles.clear();
    m_imageWidth = 0;
    m_imageHeight = 0;
}

void QuadRenderer::CreateTiles(QOpenGLFunctions& gl, Pixels pixels, int width, int height) {
    DeleteTiles(gl);
    const int side = std::max(static_cast<int>(m_maxTextureSide), 1);
    for (int top = 0; top < height; top += side) {
        for (int left = 0; left < width; left += side) {
            const QRect area(left, top, std::min(side, width - left), std::min(side, height - top));
            m_tiles.push_back({CreateTexture(gl, pixels, area.size()), area});
        }
    }
    m_imagePixels = pixels;
    m_imageWidth = width;
    m_imageHeight = height;
    FillQuads();
}

GLuint QuadRenderer::CreateTexture(QOpenGLFunctions& gl, Pixels pixels, const QSize& size) {
    GLuint texture = 0;
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(GL_TEXTURE_2D, texture);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    const GLint format = pixels == Pixels::Bgr ? GL_RGB : greyFormat() == GL_RED ? GL_R8 : GL_LUMINANCE;
    gl.glTexImage2D(GL_TEXTURE_2D, 0, format, size.width(), size.height(), 0, sourceFormat(pixels),
                    GL_UNSIGNED_BYTE, nullptr);
    if (format == GL_R8) {
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_G, GL_RED);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_B, GL_RED);
    }
    return texture;
}

void QuadRenderer::Upload(QOpenGLFunctions& gl, QOpenGLBuffer& buffer, Pixels pixels, int width, int height) {
    gl.glActiveTexture(GL_TEXTURE0);
    if (width != m_imageWidth || height != m_imageHeight || pixels != m_imagePixels || m_tiles.empty()) {
        CreateTiles(gl, pixels, width, height);
    }
    buffer.bind();
    gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    const bool several = m_tiles.size() > 1;
    if (several) {
        gl.glPixelStorei(GL_UNPACK_ROW_LENGTH, width);
    }
    const std::uintptr_t pixelBytes = pixels == Pixels::Grey ? 1 : 3;
    for (const Tile& tile : m_tiles) {
        const auto before = static_cast<std::uintptr_t>(tile.area.y()) * static_cast<std::uintptr_t>(width) +
                            static_cast<std::uintptr_t>(tile.area.x());
        gl.glBindTexture(GL_TEXTURE_2D, tile.texture);
        gl.glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, tile.area.width(), tile.area.height(),
                           sourceFormat(pixels), GL_UNSIGNED_BYTE,
                           reinterpret_cast<const void*>(before * pixelBytes)); // within the buffer
    }
    if (several) {
        gl.glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    }
    gl.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    gl.glBindTexture(GL_TEXTURE_2D, 0);
    buffer.release();
}

void QuadRenderer::DrawLogo(QOpenGLFunctions& gl) {
    Draw(gl, m_logoProgram, m_logoTexture, 0);
}

void QuadRenderer::DrawImage(QOpenGLFunctions& gl) {
    int firstVertex = kVerticesPerQuad; // behind the logo's
    for (const Tile& tile : m_tiles) {
        Draw(gl, m_imageProgram, tile.texture, firstVertex);
        firstVertex += kVerticesPerQuad;
    }
}

void QuadRenderer::Draw(QOpenGLFunctions& gl, QOpenGLShaderProgram& program, GLuint texture,
                        int firstVertex) {
    if (texture == 0 || !program.isLinked()) {
        return;
    }
    gl.glDisable(GL_DEPTH_TEST);
    gl.glDisable(GL_BLEND);
    gl.glActiveTexture(GL_TEXTURE0);
    gl.glBindTexture(GL_TEXTURE_2D, texture);

    program.bind();
    program.setUniformValue("picture", 0);
    const QOpenGLVertexArrayObject::Binder layout(&m_layout);
    m_quads.bind();
    program.enableAttributeArray(kPosition);
    program.enableAttributeArray(kCoordinate);
    program.setAttributeBuffer(kPosition, GL_FLOAT, 0, 3, 5 * sizeof(float));
    program.setAttributeBuffer(kCoordinate, GL_FLOAT, 3 * sizeof(float), 2, 5 * sizeof(float));
    gl.glDrawArrays(GL_TRIANGLE_FAN, firstVertex, kVerticesPerQuad);
    program.disableAttributeArray(kCoordinate);
    program.disableAttributeArray(kPosition);
    m_quads.release();
    program.release();
    gl.glBindTexture(GL_TEXTURE_2D, 0);
}
