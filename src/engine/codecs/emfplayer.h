#pragma once

#include "engine/codecs/emfplus.h"
#include "engine/codecs/metafilecontext.h"
#include "engine/codecs/metafilerecord.h"

/// Plays the records of an enhanced metafile. Source: the published [MS-EMF]. Offsets count from the record's start.
class EmfPlayer
{
public:
    /// `hasPlainDrawing`: there is more in the file than what EMF+ comments draw.
    EmfPlayer(MetafileContext &context, bool hasPlainDrawing)
        : m_context(context)
        , m_plus(context, hasPlainDrawing)
    {
    }
    void play(const MetafileRecord &record);

private:
    void playComment(const MetafileRecord &record);
    bool playMapping(const MetafileRecord &record);
    bool playState(const MetafileRecord &record);
    bool playObject(const MetafileRecord &record);
    bool playClip(const MetafileRecord &record);
    bool playPath(const MetafileRecord &record);
    bool playLines(const MetafileRecord &record);
    bool playShape(const MetafileRecord &record);
    bool playRegion(const MetafileRecord &record);
    bool playBitmap(const MetafileRecord &record);
    bool playText(const MetafileRecord &record);

    void modifyWorld(const MetafileRecord &record);
    void selectObject(quint32 index);
    void createExtendedPen(const MetafileRecord &record);
    void createFont(const MetafileRecord &record);
    void createPatternBrush(const MetafileRecord &record);
    void clipToRegion(const MetafileRecord &record);
    void drawPoints(const MetafileRecord &record, int kind, bool small);
    void drawManyPolygons(const MetafileRecord &record, bool closed, bool small);
    void drawMixed(const MetafileRecord &record, bool small);
    void drawArc(const MetafileRecord &record);
    void angleArc(const MetafileRecord &record);
    void frameRegion(const MetafileRecord &record);
    void fillRegion(const MetafileRecord &record, size_t dataAt);
    void drawTextAt(const MetafileRecord &record, size_t at, bool wide);
    void drawSmallText(const MetafileRecord &record);
    void blitRecord(const MetafileRecord &record);
    void maskedBlit(const MetafileRecord &record);
    void skewedBlit(const MetafileRecord &record);
    void setDibToDevice(const MetafileRecord &record);
    void stretchDib(const MetafileRecord &record);
    void gradient(const MetafileRecord &record);

    MetafileContext &m_context;
    EmfPlusPlayer m_plus;
};

/// The bitmap whose header and pixels an EMF record names by four numbers at `at`: offset and size of each.
QImage emfBitmap(const MetafileRecord &record, size_t at, bool keepAlpha = false);
