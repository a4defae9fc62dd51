#pragma once

#include <QByteArrayView>
#include <QString>

/// Text from elsewhere, whose encoding nobody has told: UTF-8, and what is not that is Windows-1252.
QString textFromBytes(QByteArrayView bytes);
