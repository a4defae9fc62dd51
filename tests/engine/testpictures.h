#pragma once

#include "engine/picture.h"

#include <QList>

/// One picture of every kind that a writer may be given, small and of odd widths.
struct TestPicture
{
    const char *name;
    Picture picture;
    bool forOthers = true; ///< takes part where other programs read, each of which costs its start
};
QList<TestPicture> testPictures();
