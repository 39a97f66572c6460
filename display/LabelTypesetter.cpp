#include "LabelTypesetter.h"

#include <QFontMetricsF>
#include <QPaintDevice>

#include <algorithm>
#include <cmath>

namespace {

/// Pixels of the sheet's sides: room for a thousand words in a usual font, within what every graphics system
/// draws.
constexpr int kSheetSide = 1024;
/// Characters of a word that are drawn; nobody reads further, and a label file may hold anything.
constexpr int kMaxWord = 200;
/// Pixels around a word for what leans out of its letters' own width.
constexpr int kMargin = 2;

bool isNumber(const QString& word) {
    return std::all_of(word.begin(), word.end(), [](QChar c) {
        return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.') ||
               c == QLatin1Char('%');
    });
}

} // namespace

void LabelTypesetter::SetFont(const QFont& font, const QPainter& painter) {
    const int dpi = painter.device()->logicalDpiY();
    const qreal ratio = painter.device()->devicePixelRatioF();
    const QColor color = painter.pen().color();
    if (font == m_font && dpi == m_dpi && ratio == m_ratio && color == m_color) {
        return;
    }
    m_font = QFont(font, painter.device());
    m_dpi = dpi;
    m_ratio = ratio;
    m_color = color;
    const QFontMetricsF metrics(m_font);
    m_ascent = metrics.ascent();
    m_lineHeight = metrics.lineSpacing();
    m_space = metrics.horizontalAdvance(QLatin1Char(' '));
    ClearSheet();
}

void LabelTypesetter::ClearSheet() {
    m_sheet = QImage(kSheetSide, kSheetSide, QImage::Format_ARGB32_Premultiplied);
    m_sheet.fill(Qt::transparent);
    m_sheet.setDotsPerMeterX(static_cast<int>(std::lround(m_dpi / 0.0254)));
    m_sheet.setDotsPerMeterY(m_sheet.dotsPerMeterX());
    m_sheet.setDevicePixelRatio(m_ratio);
    ++m_sheetNumber;
    m_words.clear();
    m_free = {};
    m_sheetHasGrown = true;
}

LabelTypesetter::Word LabelTypesetter::PutOnSheet(const QString& text, QPainter& painter) {
    const QString drawn = text.left(kMaxWord);
    const QFontMetricsF metrics(m_font);
    Word word;
    word.width = metrics.horizontalAdvance(drawn);
    const int wide = std::min(static_cast<int>(std::ceil(word.width * m_ratio)) + 2 * kMargin, kSheetSide);
    const int high =
        std::min(static_cast<int>(std::ceil(metrics.height() * m_ratio)) + 2 * kMargin, kSheetSide);
    if (m_free.x() + wide > kSheetSide) {
        m_free = QPoint(0, m_free.y() + high);
    }
    if (m_free.y() + high > kSheetSide) {
        Flush(painter);
        ClearSheet();
    }
    word.source = QRectF(m_free.x(), m_free.y(), wide, high);
    QPainter pen(&m_sheet);
    pen.setClipRect(QRectF(word.source.topLeft() / m_ratio, word.source.size() / m_ratio));
    pen.setFont(m_font);
    pen.setPen(m_color);
    const QPointF start = QPointF(m_free + QPoint(kMargin, kMargin)) / m_ratio;
    pen.drawText(start + QPointF(0, m_ascent), drawn);
    m_free.rx() += wide;
    m_sheetHasGrown = true;
    return word;
}

LabelTypesetter::Word LabelTypesetter::WordOf(const QString& text, QPainter& painter) {
    const auto found = m_words.constFind(text);
    if (found != m_words.constEnd()) {
        return *found;
    }
    const Word word = PutOnSheet(text, painter);
    m_words.insert(text, word);
    return word;
}

void LabelTypesetter::Place(const Word& word, const QPointF& topLeft, qreal right) {
    // On whole device pixels, or the copy would blur.
    const qreal left = std::round(topLeft.x() * m_ratio) - kMargin;
    const qreal top = std::round(topLeft.y() * m_ratio) - kMargin;
    QRectF source = word.source;
    source.setWidth(std::min(source.width(), std::round(right * m_ratio) - left));
    if (source.width() > 0) {
        const QPointF middle = QPointF(left + source.width() / 2, top + source.height() / 2) / m_ratio;
        m_fragments.append(QPainter::PixmapFragment::create(middle, source, 1 / m_ratio, 1 / m_ratio));
    }
}

void LabelTypesetter::Add(const QRect& box, const QString& text) {
    m_labels.append({box, text});
}

qreal LabelTypesetter::CollectPieces(const QString& part, QPainter& painter) {
    // Numbers change with every frame, their digits do not.
    const int step = isNumber(part) ? 1 : std::max(part.size(), 1);
    qreal width = 0;
    int sheet = -1;
    // A piece that found the sheet full began a new one, where the pieces before it are missing.
    for (int attempt = 0; attempt < 2 && sheet != m_sheetNumber; ++attempt) {
        sheet = m_sheetNumber;
        m_pieces.clear();
        width = 0;
        for (int i = 0; i < part.size(); i += step) {
            m_pieces.append(WordOf(part.mid(i, step), painter));
            width += m_pieces.last().width;
        }
    }
    return width;
}

void LabelTypesetter::Set(const Label& label, QPainter& painter) {
    const qreal right = label.box.right() + 1;
    qreal top = label.box.top();
    for (const QString& line : label.text.split(QLatin1Char('\n'))) {
        qreal left = label.box.left();
        for (const QString& part : line.split(QLatin1Char(' '))) {
            const qreal width = CollectPieces(part, painter);
            if (left > label.box.left() && left + width > right) {
                left = label.box.left();
                top += m_lineHeight;
            }
            if (top + m_ascent > label.box.bottom() + 1) {
                return;
            }
            for (const Word& piece : qAsConst(m_pieces)) {
                Place(piece, QPointF(left, top), right);
                left += piece.width;
            }
            left += m_space;
        }
        top += m_lineHeight;
    }
}

void LabelTypesetter::Flush(QPainter& painter) {
    if (m_sheetHasGrown) {
        m_shown = QPixmap::fromImage(m_sheet);
        m_shown.setDevicePixelRatio(1);
        m_sheetHasGrown = false;
    }
    painter.drawPixmapFragments(m_fragments.constData(), m_fragments.size(), m_shown);
    m_fragments.clear();
}

void LabelTypesetter::Draw(QPainter& painter) {
    for (const Label& label : m_labels) {
        Set(label, painter);
    }
    m_labels.clear();
    Flush(painter);
}
