#include "app/checkjpg.h"
#include "engine/ops/areaaverage.h"
#include "shell/frmPreferences.h"

// A picture of many megapixels is reduced once; the slider then moves over what is left.
std::shared_ptr<const LoadedPicture> frmPreferences::sampleSource(int side)
{
    const auto picture = form<checkjpg>().Picture1.picture();
    if (!picture || (picture == m_sampleOf.lock() && side == m_sampleSide))
        return picture ? m_sample : nullptr;
    m_sampleOf = picture;
    m_sampleSide = side;
    m_sample = picture;
    Picture reduced = picture->atLeast({side, side});
    if (reduced.pixels.width() > side || reduced.pixels.height() > side) {
        const QSize size = reduced.pixels.size().scaled(side, side, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
        reduced.pixels = areaAverage(reduced.pixels, size);
        if (!reduced.isNull())
            m_sample = LoadedPicture::fromReduced(reduced);
    }
    return m_sample;
}

void frmPreferences::sldThumbNailSize_Change()
{
    const int size = sldThumbNailSize->value();
    lblThumbNailSizeValue->setText(tr("Size = %1").arg(size));
    const double ratio = devicePixelRatioF();
    const int pixels = int(size * ratio);
    auto &mask = form<checkjpg>().ImageMaskControl1;
    mask.setMaskThumbnailStyle(chkThumbNailStyle->isChecked());
    mask.setMaskThumbnailBackColor(m_thumbnailBackColor);
    mask.setMaskPicture(sampleSource(int(2 * sldThumbNailSize->maximum() * ratio)));
    mask.MaskMakeThumbnail(pixels, pixels);
    mask.setMaskPicture(nullptr);
    QImage sample = mask.MaskThumbnailPicture().pixels;
    sample.setDevicePixelRatio(ratio);
    Image1->setPixmap(QPixmap::fromImage(sample));
}
