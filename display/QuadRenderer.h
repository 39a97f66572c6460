#pragma once

#include <QImage>
#include <QOpenGLBuffer>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QOpenGLVertexArrayObject>
#include <QRect>

#include <vector>

/// Draws the two pictures of an image display, each as one textured quad that fills the viewport: the logo
/// before the first image, and the image; one that is larger than a texture may be, as several quads. Works
/// on core profiles, on compatibility contexts and on OpenGL ES. Owned by the GL widget; every call needs its
/// context to be current.
class QuadRenderer {
public:
    /// What the image's pixels are: one byte of grey, or three of blue, green and red.
    enum class Pixels { Grey, Bgr };

    /// @param logo  rows from the bottom up, Format_RGBA8888; null draws nothing.
    void Create(QOpenGLFunctions& gl, const QImage& logo);
    void Destroy(QOpenGLFunctions& gl);

    void DrawLogo(QOpenGLFunctions& gl);
    /// Takes width x height pixels, rows without padding, from the start of a pixel-unpack buffer. The
    /// textures are made anew only when the size or the kind of pixels changes.
    void Upload(QOpenGLFunctions& gl, QOpenGLBuffer& buffer, Pixels pixels, int width, int height);
    /// Draws what was uploaded last, first row at the top, pixels as blocks.
    void DrawImage(QOpenGLFunctions& gl);

private:
    static void Compile(QOpenGLShaderProgram& program, const char* fragmentShader);
    /// A part of the image that fits into a texture.
    struct Tile {
        GLuint texture;
        QRect area;
    };

    void FillQuads();
    void CreateTiles(QOpenGLFunctions& gl, Pixels pixels, int width, int height);
    void DeleteTiles(QOpenGLFunctions& gl);
    static GLuint CreateTexture(QOpenGLFunctions& gl, Pixels pixels, const QSize& size);
    void Draw(QOpenGLFunctions& gl, QOpenGLShaderProgram& program, GLuint texture, int firstVertex);

    QOpenGLShaderProgram m_logoProgram;
    QOpenGLShaderProgram m_imageProgram;
    QOpenGLVertexArrayObject m_layout;
    QOpenGLBuffer m_quads{QOpenGLBuffer::VertexBuffer};
    GLuint m_logoTexture = 0;
    std::vector<Tile> m_tiles; ///< none before the first image
    GLint m_maxTextureSide = 0;
    Pixels m_imagePixels = Pixels::Bgr;
    int m_imageWidth = 0;
    int m_imageHeight = 0;
};
