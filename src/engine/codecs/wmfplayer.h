#pragma once

#include "engine/codecs/metafilecontext.h"
#include "engine/codecs/metafilerecord.h"

/// Plays the records of a metafile of 16 bits. Source: the published [MS-WMF]. The record's type is the function; its
/// parameters start at byte 6, the last one of the function first.
class WmfPlayer
{
public:
    explicit WmfPlayer(MetafileContext &context)
        : m_context(context)
    {
    }
    void play(const MetafileRecord &record);

private:
    bool playMapping(const MetafileRecord &record);
    bool playState(const MetafileRecord &record);
    bool playObject(const MetafileRecord &record);
    bool playClip(const MetafileRecord &record);
    bool playRegion(const MetafileRecord &record);
    bool playShape(const MetafileRecord &record);
    bool playBitmap(const MetafileRecord &record);
    bool playText(const MetafileRecord &record);

    void createFont(const MetafileRecord &record);
    void createRegion(const MetafileRecord &record);
    void drawArc(const MetafileRecord &record, int kind);
    void drawPolygons(const MetafileRecord &record);
    void drawText(const MetafileRecord &record);
    void drawExtendedText(const MetafileRecord &record);
    void blit(const MetafileRecord &record, bool stretches, bool independent);
    void stretchDib(const MetafileRecord &record);
    void setDibToDevice(const MetafileRecord &record);
    /// The box at `at` as shapes with an outline fill it: right and bottom edges lie a pixel further in.
    QRectF outlinedBox(const MetafileRecord &record, size_t at);

    MetafileContext &m_context;
};
