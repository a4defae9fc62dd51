#pragma once

#include "engine/codecs/psdlayout.h"

#include <vector>

namespace psd {

/// The rows of the channels that are shown, unpacked one at a time where the compression allows that.
class Planes
{
public:
    /// Of the flattened picture, or of the plain layer when the layout has one. Fails when nothing can be unpacked.
    static Result<Planes> open(Bytes file, const Layout &layout);

    int count() const { return int(m_planes.size()); }
    enum class Extent { Nothing, Part, Whole };
    /// How much of the row the file holds; what is missing of `row` (layout.rowBytes()) stays as it was.
    Extent read(int channel, int y, std::span<uchar> row) const;
    /// Whether these are the colours before they were flattened over white.
    bool isFromLayer() const { return m_isFromLayer; }

private:
    struct Plane
    {
        Bytes plain; ///< rows one behind another, possibly cut
        std::vector<quint64> packedRows; ///< places in m_file, one more than there are rows; empty: not packed
        bool isPredicted = false;
    };

    Result<void> openFlattened(const Layout &layout);
    bool openLayer(const Layout &layout);
    Bytes inflated(Bytes packed, quint64 wanted);
    std::vector<quint64> packedRows(size_t countsAt, size_t rowsAt, size_t firstRow, const Layout &layout) const;
    void undoPrediction(std::span<uchar> row) const;

    Bytes m_file;
    int m_depth = 8;
    std::vector<Plane> m_planes;
    std::vector<QByteArray> m_inflated; ///< what planes of zip data point into
    bool m_isFromLayer = false;
};

}
