#pragma once

#include <QPainterPath>
#include <QString>

#include <span>

/// Text of vector pictures as outlines: three generic families in four styles, drawn at one fixed design size and
/// scaled. Pictures name fonts that no machine is sure to have, and the process that draws them may open no file, so
/// only these faces are used. Characters that no face has take their room and stay blank; nothing is shaped or joined.

struct VectorFont
{
    enum class Family { Sans, Serif, Monospaced, Symbol, Pictographs };
    enum class Height { Em, Cell }; ///< what `size` measures: the em square, or ascent and descent together

    Family family = Family::Sans;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    Height measure = Height::Em;
    double size = 12; ///< in the caller's units
    double averageWidth = 0; ///< of a lower-case letter, in the same units; 0: as the face is made
    double angle = 0; ///< of the base line in degrees, anticlockwise as the reader sees it
};

/// Lines of text as the caller draws it, in the caller's units, y downwards.
struct VectorText
{
    QPainterPath outlines; ///< fills by the winding rule; the base line starts at (0, 0) and is turned by the angle
    QPointF advance; ///< from the start to where the next text would start, not turned
    double ascent = 0;
    double descent = 0; ///< positive below the base line
};

/// The generic family for a font name as files hold it: "Times New Roman", "Courier", "Swiss 721", "Symbol".
VectorFont::Family vectorFamilyOf(QStringView name);

/// Loads every face in the calling thread and keeps it, so that text drawn later in this thread opens no file. To be
/// called with a QGuiApplication; without one it does nothing.
void warmUpVectorText();

/// Whether text can be drawn at all: only with a QGuiApplication and at least one font.
bool canDrawVectorText();

/// The outlines of one line. `advances`: the way from each UTF-16 unit to the next, x along the base line and y
/// downwards; units beyond its end advance by the face's widths. Without a QGuiApplication the outlines are empty and
/// widths are guessed.
/// In the families Symbol and Pictographs the codes 0x20..0xFF, alone or at U+F000, mean those fonts' signs.
VectorText layOutVectorText(const VectorFont &font, const QString &text, std::span<const QPointF> advances = {});
