#pragma once

#include "engine/codecs/emfplusobjects.h"
#include "engine/codecs/metafilecontext.h"

#include <array>

/// Plays the records that enhanced metafiles carry in comments, for files that have no plain records beside them.
/// Source: the published [MS-EMFPLUS]. Left out: line caps other than flat, square and round, image attributes,
/// metafiles within, vertical text, gradients along paths in more than two colours, terminal-server records.
class EmfPlusPlayer
{
public:
    EmfPlusPlayer(MetafileContext &context, bool hasPlainDrawing)
        : m_context(context)
        , m_hasPlainDrawing(hasPlainDrawing)
    {
    }
    /// The records of one comment, behind its identifier.
    void play(Bytes records);
    /// Whether the plain records count now: always, until a file says that it has none, and then where it asks for
    /// them.
    bool wantsPlainRecords() const { return m_plain; }

private:
    struct Saved
    {
        quint32 index;
        QTransform world;
        QTransform page;
        MetafileClip clip;
    };
    void playRecord(int type, int flags, const MetafileRecord &data);
    bool playObject(int type, int flags, const MetafileRecord &data);
    bool playTransform(int type, int flags, const MetafileRecord &data);
    bool playSaving(int type, const MetafileRecord &data);
    bool playClip(int type, int flags, const MetafileRecord &data);
    bool playShape(int type, int flags, const MetafileRecord &data);
    bool playCurve(int type, int flags, const MetafileRecord &data);
    bool playPath(int type, int flags, const MetafileRecord &data);
    bool playPicture(int type, int flags, const MetafileRecord &data);

    void transformWorld(const QTransform &by, int flags);
    void setPage(int unit, double scale);
    void restore(quint32 index);
    void fill(const QPainterPath &world, int flags, quint32 brush);
    void stroke(const QPainterPath &world, int pen);
    QRegion regionPixels(const PlusRegion &region);
    void drawString(int flags, const MetafileRecord &data);
    void drawGlyphs(int flags, const MetafileRecord &data);
    void drawLine(const VectorText &line, QPointF at, const QTransform &turn, int flags, quint32 brush);
    double fontSize(const PlusFont &font) const;
    template <class T> const T *object(int id) const { return std::get_if<T>(&m_objects[size_t(id & 63)]); }
    QTransform toPixels() const { return m_world * m_page * m_context.toCanvas(); }

    MetafileContext &m_context;
    bool m_hasPlainDrawing;
    bool m_plain = true;
    bool m_active = false;
    QTransform m_world;
    QTransform m_page;
    double m_pixelsPerInch = 96;
    std::array<PlusObject, 64> m_objects;
    std::vector<Saved> m_saved;
    QByteArray m_partialObject;
};
