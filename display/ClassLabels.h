#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

/// The names of classes, one a line: line n, counted from 0, names class n. UTF-8, with or without a byte
/// order mark, with LF or CRLF. Of a long line the first 4096 characters count, of a long text the first
/// 100000 lines.
QMap<int, QString> ReadClassLabels(const QByteArray& text);
