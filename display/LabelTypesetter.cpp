#include "LabelTypesetter.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPaintDevice>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>

namespace {

constexpr int kMaxWords = 4096;

bool isNumber(const QString& word) {
    return std::all_of(word.begin(), word.end(), [](QChar c) {
        return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.') ||
               c == QLatin1Char('%');
    });
}

} // namespace

void LabelTypesetter::SetFont(const QFont& font, QPaintDevice* device) {
    const int dpi = device->logicalDpiY();
    if (font == m_font && dpi == m_dpi) {
        return;
    }
    m_font = QFont(font, device);
    m_dpi = dpi;
    const QFontMetricsF metrics(m_font);
    m_ascent = metrics.ascent();
    m_lineHeight = metrics.lineSpacing();
    m_space = metrics.horizontalAdvance(QLatin1Char(' '));
    m_words.clear();
    m_fonts.clear();
    m_batches.clear();
}

int LabelTypesetter::FontNumber(const QRawFont& font) {
    int number = m_fonts.indexOf(font);
    if (number < 0) {
        number = m_fonts.size();
        m_fonts.append(font);
        m_batches.append(Batch());
    }
    return number;
}

LabelTypesetter::Word LabelTypesetter::Shape(const QString& text) {
    QTextLayout layout(text, m_font);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    Word word;
    if (!line.isValid()) {
        return word;
    }
    word.width = line.naturalTextWidth();
    for (const QGlyphRun& run : layout.glyphRuns()) {
        const int font = FontNumber(run.rawFont());
        const QVector<quint32> indexes = run.glyphIndexes();
        const QVector<QPointF> positions = run.positions();
        for (int i = 0; i < indexes.size(); ++i) {
            const qreal end = i + 1 < positions.size() ? positions[i + 1].x() : word.width;
            word.glyphs.append({font, indexes[i], positions[i] - QPointF(0, line.ascent()), end});
        }
    }
    return word;
}

LabelTypesetter::Word LabelTypesetter::ShapeNumber(const QString& text) {
    // Numbers change with every frame, their digits do not.
    Word number;
    for (const QChar character : text) {
        const Word& digit = Shaped(QString(character));
        for (Glyph glyph : digit.glyphs) {
            glyph.position.rx() += number.width;
            glyph.end += number.width;
            number.glyphs.append(glyph);
        }
        number.width += digit.width;
    }
    return number;
}

const LabelTypesetter::Word& LabelTypesetter::Shaped(const QString& text) {
    auto found = m_words.find(text);
    if (found == m_words.end()) {
        if (m_words.size() >= kMaxWords) {
            m_words.clear();
        }
        found = m_words.insert(text, Shape(text));
    }
    return *found;
}

void LabelTypesetter::Place(const Word& word, const QPointF& baseline, qreal right) {
    for (const Glyph& glyph : word.glyphs) {
        if (baseline.x() + glyph.end > right) {
            break;
        }
        m_batches[glyph.font].indexes.append(glyph.index);
        m_batches[glyph.font].positions.append(baseline + glyph.position);
    }
}

void LabelTypesetter::Add(const QRect& box, const QString& text) {
    const qreal right = box.right() + 1;
    qreal top = box.top();
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        qreal left = box.left();
        for (const QString& part : line.split(QLatin1Char(' '))) {
            const Word word = isNumber(part) && part.size() > 1 ? ShapeNumber(part) : Shaped(part);
            if (left > box.left() && left + word.width > right) {
                left = box.left();
                top += m_lineHeight;
            }
            if (top + m_ascent > box.bottom() + 1) {
                return;
            }
            Place(word, QPointF(left, top + m_ascent), right);
            left += word.width + m_space;
        }
        top += m_lineHeight;
    }
}

void LabelTypesetter::Draw(QPainter& painter) {
    for (int i = 0; i < m_batches.size(); ++i) {
        Batch& batch = m_batches[i];
        if (!batch.indexes.isEmpty()) {
            QGlyphRun run;
            run.setRawFont(m_fonts[i]);
            run.setGlyphIndexes(batch.indexes);
            run.setPositions(batch.positions);
            painter.drawGlyphRun(QPointF(), run);
        }
        batch.indexes.clear();
        batch.positions.clear();
    }
}
