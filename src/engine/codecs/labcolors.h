#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

inline constexpr int linearSteps = 65536;

/// Linear light, in steps of 1/65535, as sRGB.
template <class Sample> const std::vector<Sample> &srgbTable()
{
    static const std::vector<Sample> table = [] {
        std::vector<Sample> samples(linearSteps);
        for (int i = 0; i < linearSteps; ++i) {
            const double light = double(i) / (linearSteps - 1);
            const double value = light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
            samples[size_t(i)] = Sample(std::lround(value * std::numeric_limits<Sample>::max()));
        }
        return samples;
    }();
    return table;
}

/// The table's row for a light from 0 to 1.
inline size_t linearStep(float light)
{
    // What is no number counts as full light, as missing rows do.
    const float within = !(light < 1) ? 1.0F : light > 0 ? light : 0.0F;
    return size_t(within * (linearSteps - 1) + 0.5F);
}

/// CIE Lab under D50 to sRGB by the published formulas and the Bradford adaptation. Lightness fills the samples' range;
/// the other two have their middle at half of it, 256 units in all.
template <class Sample> class LabConverter
{
public:
    LabConverter()
        : m_lightness(samples)
        , m_difference(samples)
    {
        constexpr int neutral = samples / 2;
        constexpr double perUnit = samples / 256.0;
        for (int i = 0; i < samples; ++i) {
            m_lightness[size_t(i)] = float((100.0 * i / (samples - 1) + 16) / 116);
            m_difference[size_t(i)] = float((i - neutral) / perUnit);
        }
    }

    void convert(Sample *lightness, Sample *a, Sample *b, int width) const
    {
        for (int x = 0; x < width; ++x) {
            const float y = m_lightness[lightness[x]];
            const float lightX = 0.96422F * light(y + m_difference[a[x]] / 500);
            const float lightY = light(y);
            const float lightZ = 0.82521F * light(y - m_difference[b[x]] / 200);
            lightness[x] = m_srgb[linearStep(3.1338561F * lightX - 1.6168667F * lightY - 0.4906146F * lightZ)];
            a[x] = m_srgb[linearStep(-0.9787684F * lightX + 1.9161415F * lightY + 0.0334540F * lightZ)];
            b[x] = m_srgb[linearStep(0.0719453F * lightX - 0.2289914F * lightY + 1.4052427F * lightZ)];
        }
    }

private:
    static constexpr int samples = std::numeric_limits<Sample>::max() + 1;
    static float light(float value)
    {
        constexpr float bend = 6.0F / 29;
        return value > bend ? value * value * value : 3 * bend * bend * (value - 4.0F / 29);
    }

    std::vector<float> m_lightness;
    std::vector<float> m_difference;
    const std::vector<Sample> &m_srgb = srgbTable<Sample>();
};
