#pragma once

#include "engine/codecs/psdplanes.h"

#include <QImage>

namespace psd {

struct Pixels
{
    QImage image;
    bool complete = true;
};

/// The channels of a document as a picture.
Result<Pixels> readPixels(const Planes &planes, const Layout &layout);

}
