#pragma once

#include <QFont>
#include <QHash>
#include <QRawFont>
#include <QRect>
#include <QString>
#include <QVector>

class QPaintDevice;
class QPainter;

/// Sets the labels of many boxes and draws them together. Shaping text and drawing it piece by piece is what
/// takes the time, so every word is shaped once and all words of a frame are drawn in one go. Lines break
/// between words; what does not fit into its box is left out. User-interface thread.
class LabelTypesetter {
public:
    /// The font of what follows, at the resolution of the device that it is drawn on.
    void SetFont(const QFont& font, QPaintDevice* device);
    /// Sets `text` from the top left corner of `box`.
    void Add(const QRect& box, const QString& text);
    /// Draws everything added since, with the painter's pen.
    void Draw(QPainter& painter);

private:
    struct Glyph {
        int font; // in m_fonts
        quint32 index;
        QPointF position; // from the word's left end on the baseline
        qreal end;        // where the next one begins
    };
    struct Word {
        QVector<Glyph> glyphs;
        qreal width = 0;
    };
    struct Batch {
        QVector<quint32> indexes;
        QVector<QPointF> positions;
    };

    const Word& Shaped(const QString& text);
    Word Shape(const QString& text);
    Word ShapeNumber(const QString& text);
    int FontNumber(const QRawFont& font);
    void Place(const Word& word, const QPointF& baseline, qreal right);

    QFont m_font;
    int m_dpi = 0;
    qreal m_ascent = 0;
    qreal m_lineHeight = 0;
    qreal m_space = 0;
    QHash<QString, Word> m_words;
    QVector<QRawFont> m_fonts; // the font itself and those that fill in for characters it lacks
    QVector<Batch> m_batches;  // one for each of m_fonts
};
