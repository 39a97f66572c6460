#pragma once

#include <QColor>
#include <QFont>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QRect>
#include <QString>
#include <QVector>

/// Sets the labels of many boxes and draws them together. Shaping text, and handing every letter to the
/// graphics system, is what takes the time: so each word is drawn once onto a sheet, and a frame copies the
/// words of all labels from there in one go. Lines break between words; what does not fit into its box is
/// left out. User-interface thread.
class LabelTypesetter {
public:
    /// The font of what follows, for a painter of the device that it is drawn on.
    void SetFont(const QFont& font, const QPainter& painter);
    /// Sets `text` from the top left corner of `box`.
    void Add(const QRect& box, const QString& text);
    /// Draws everything added since, in the colour of the painter's pen.
    void Draw(QPainter& painter);

private:
    struct Label {
        QRect box;
        QString text;
    };
    /// A word on the sheet.
    struct Word {
        QRectF source;   // pixels of the sheet, with the margins
        qreal width = 0; // to where the next one begins
    };

    Word WordOf(const QString& text, QPainter& painter);
    Word PutOnSheet(const QString& text, QPainter& painter);
    void ClearSheet();
    void Set(const Label& label, QPainter& painter);
    /// Finds what the sheet has of a word; returns the width of all pieces.
    qreal CollectPieces(const QString& part, QPainter& painter);
    void Place(const Word& word, const QPointF& topLeft, qreal right);
    void Flush(QPainter& painter);

    QFont m_font;
    QColor m_color;
    int m_dpi = 0;
    qreal m_ratio = 1; // device pixels in one
    qreal m_ascent = 0;
    qreal m_lineHeight = 0;
    qreal m_space = 0;
    QVector<Label> m_labels;
    QImage m_sheet;
    int m_sheetNumber = 0; // counts the sheets begun
    QPixmap m_shown;       // the sheet as last handed to the graphics system
    bool m_sheetHasGrown = false;
    QPoint m_free; // where the next word goes, in pixels of the sheet
    QHash<QString, Word> m_words;
    QVector<Word> m_pieces; // of the word in hand
    QVector<QPainter::PixmapFragment> m_fragments;
};
