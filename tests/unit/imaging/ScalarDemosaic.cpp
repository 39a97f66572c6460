#include "ScalarDemosaic.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace Norvane::Test {
namespace {

int Reflected(int index, int count) {
    if (count == 1) {
        return 0;
    }
    while (index < 0 || index >= count) {
        index = index < 0 ? -index : 2 * (count - 1) - index;
    }
    return index;
}

/// The colour of a site: 0 blue, 1 green, 2 red.
int ColorAt(BayerPhase phase, int y, int x) {
    static constexpr int kColors[4][4] = {{1, 2, 0, 1}, {2, 1, 1, 0}, {1, 0, 2, 1}, {0, 1, 1, 2}};
    return kColors[static_cast<int>(phase) - 1][(y & 1) * 2 + (x & 1)];
}

/// The colour, other than green, of a row.
int RowColor(BayerPhase phase, int y) {
    const int first = ColorAt(phase, y, 0);
    return first == 1 ? ColorAt(phase, y, 1) : first;
}

constexpr int kMargin = 20;

/// Values at every pixel and at kMargin pixels around the image.
template <class V>
class Plane {
public:
    Plane(int width, int height)
        : m_width(width), m_height(height), m_values(static_cast<std::size_t>(width + 2 * kMargin) *
                                                     static_cast<std::size_t>(height + 2 * kMargin)) {}

    V& operator()(int y, int x) { return m_values[Index(y, x)]; }
    V operator()(int y, int x) const { return m_values[Index(y, x)]; }

    /// Fills all but the outermost `skip` pixels.
    template <class Function>
    void Fill(int skip, Function&& f) {
        for (int y = skip - kMargin; y < m_height + kMargin - skip; ++y) {
            for (int x = skip - kMargin; x < m_width + kMargin - skip; ++x) {
                (*this)(y, x) = f(y, x);
            }
        }
    }

private:
    std::size_t Index(int y, int x) const {
        return static_cast<std::size_t>(y + kMargin) * static_cast<std::size_t>(m_width + 2 * kMargin) +
               static_cast<std::size_t>(x + kMargin);
    }

    int m_width, m_height;
    std::vector<V> m_values;
};

template <class V, class T>
Plane<V> PlaneOf(const Mosaic<T>& m, V unit) {
    Plane<V> plane(m.width, m.height);
    plane.Fill(0, [&](int y, int x) {
        return static_cast<V>(m.samples[static_cast<std::size_t>(Reflected(y, m.height) * m.width +
                                                                 Reflected(x, m.width))]) *
               unit;
    });
    return plane;
}

/// Own colour of the row, green and the other colour of one pixel.
template <class V>
struct Triple {
    V own, green, other;
};

template <class T, class Function>
std::vector<T> Render(const Mosaic<T>& m, Function&& pixel) {
    std::vector<T> out(static_cast<std::size_t>(m.width * m.height * 3));
    for (int y = 0; y < m.height; ++y) {
        const int own = RowColor(m.phase, y);
        for (int x = 0; x < m.width; ++x) {
            const auto triple = pixel(y, x);
            T* bgr = &out[static_cast<std::size_t>((y * m.width + x) * 3)];
            bgr[own] = static_cast<T>(triple.own);
            bgr[1] = static_cast<T>(triple.green);
            bgr[2 - own] = static_cast<T>(triple.other);
        }
    }
    return out;
}

using Numbers = Triple<long>;

template <class T>
std::vector<T> Integers(ColorProcessingAlgorithm algorithm, const Mosaic<T>& m) {
    const Plane<long> p = PlaneOf<long>(m, 1);
    const auto green = [&](int y, int x) { return ColorAt(m.phase, y, x) == 1; };
    const long top = std::numeric_limits<T>::max();
    const auto clamp = [&](long v) { return std::clamp(v, 0L, top); };
    const auto corners = [](const Plane<long>& q, int y, int x) {
        return (q(y - 1, x - 1) + q(y - 1, x + 1) + q(y + 1, x - 1) + q(y + 1, x + 1) + 2) >> 2;
    };
    const auto cross = [](const Plane<long>& q, int y, int x) {
        return (q(y, x - 1) + q(y, x + 1) + q(y - 1, x) + q(y + 1, x) + 2) >> 2;
    };
    const auto across = [](const Plane<long>& q, int y, int x, int k) {
        return (q(y, x - k) + q(y, x + k) + 1) >> 1;
    };
    const auto down = [](const Plane<long>& q, int y, int x, int k) {
        return (q(y - k, x) + q(y + k, x) + 1) >> 1;
    };

    switch (algorithm) {
    case NO_COLOR_PROCESSING:
        return Render(m, [&](int y, int x) { return Numbers{p(y, x), p(y, x), p(y, x)}; });
    case NEAREST_NEIGHBOR:
    case NEAREST_NEIGHBOR_AVG:
        return Render(m, [&](int y, int x) {
            const bool mean = algorithm == NEAREST_NEIGHBOR_AVG;
            if (green(y, x)) {
                return Numbers{p(y, x + 1), mean ? (p(y, x) + p(y + 1, x + 1) + 1) >> 1 : p(y, x),
                               p(y + 1, x)};
            }
            return Numbers{p(y, x), mean ? (p(y, x + 1) + p(y + 1, x) + 1) >> 1 : p(y, x + 1),
                           p(y + 1, x + 1)};
        });
    case HQ_LINEAR:
        return Render(m, [&](int y, int x) {
            const long c = p(y, x), h = p(y, x - 1) + p(y, x + 1), v = p(y - 1, x) + p(y + 1, x);
            const long h2 = p(y, x - 2) + p(y, x + 2), v2 = p(y - 2, x) + p(y + 2, x);
            const long d = p(y - 1, x - 1) + p(y - 1, x + 1) + p(y + 1, x - 1) + p(y + 1, x + 1);
            if (green(y, x)) {
                return Numbers{clamp((10 * c + 8 * h - 2 * h2 - 2 * d + v2 + 8) >> 4), c,
                               clamp((10 * c + 8 * v - 2 * v2 - 2 * d + h2 + 8) >> 4)};
            }
            return Numbers{c, clamp((4 * c + 2 * (h + v) - h2 - v2 + 4) >> 3),
                           clamp((12 * c + 4 * d - 3 * (h2 + v2) + 8) >> 4)};
        });
    case EDGE_SENSING: {
        const auto twice = [&](const Plane<long>& q, int y, int x) {
            return (across(q, y - 1, x, 1) + across(q, y + 1, x, 1) + 1) >> 1;
        };
        Plane<long> g(m.width, m.height);
        g.Fill(2, [&](int y, int x) {
            if (green(y, x)) {
                return p(y, x);
            }
            const long alongRow = std::labs(across(p, y, x, 2) - p(y, x));
            const long alongColumn = std::labs(down(p, y, x, 2) - p(y, x));
            return alongRow < alongColumn   ? across(p, y, x, 1)
                   : alongRow > alongColumn ? down(p, y, x, 1)
                                            : (across(p, y, x, 1) + down(p, y, x, 1) + 1) >> 1;
        });
        return Render(m, [&](int y, int x) {
            const long here = g(y, x);
            if (green(y, x)) {
                return Numbers{clamp(here + across(p, y, x, 1) - across(g, y, x, 1)), here,
                               clamp(here + down(p, y, x, 1) - down(g, y, x, 1))};
            }
            return Numbers{p(y, x), here, clamp(here + twice(p, y, x) - twice(g, y, x))};
        });
    }
    default:
        return Render(m, [&](int y, int x) {
            if (green(y, x)) {
                return Numbers{across(p, y, x, 1), p(y, x), down(p, y, x, 1)};
            }
            return Numbers{p(y, x), cross(p, y, x), corners(p, y, x)};
        });
    }
}

using Floats = Triple<float>;
using FloatPlane = Plane<float>;

/// What the three methods in floating point begin with.
struct Differences {
    FloatPlane mosaic, across, down;
};

template <class T>
Differences DifferencesOf(const Mosaic<T>& m) {
    Differences r{PlaneOf<float>(m, sizeof(T) == 1 ? 1.0F : 1.0F / 256), FloatPlane(m.width, m.height),
                  FloatPlane(m.width, m.height)};
    const auto estimate = [&](int y, int x, float near, float far) {
        const float sign = ColorAt(m.phase, y, x) == 1 ? -1.0F : 1.0F;
        return sign * ((near * 0.5F - far * 0.25F) - r.mosaic(y, x) * 0.5F);
    };
    const FloatPlane& p = r.mosaic;
    r.across.Fill(2, [&](int y, int x) {
        return estimate(y, x, p(y, x - 1) + p(y, x + 1), p(y, x - 2) + p(y, x + 2));
    });
    r.down.Fill(2, [&](int y, int x) {
        return estimate(y, x, p(y - 1, x) + p(y + 1, x), p(y - 2, x) + p(y + 2, x));
    });
    return r;
}

template <class T, class Function>
std::vector<T> RenderFloats(const Mosaic<T>& m, Function&& pixel) {
    const auto round = [](float v) {
        const float scaled = v * (sizeof(T) == 1 ? 1.0F : 256.0F);
        const float top = static_cast<float>(std::numeric_limits<T>::max());
        return static_cast<long>(std::min(std::max(scaled, 0.0F), top) + 0.5F);
    };
    return Render(m, [&](int y, int x) {
        const Floats f = pixel(y, x);
        return Numbers{round(f.own), round(f.green), round(f.other)};
    });
}

template <class T>
std::vector<T> Directional(const Mosaic<T>& m) {
    const Differences r = DifferencesOf(m);
    const auto green = [&](int y, int x) { return ColorAt(m.phase, y, x) == 1; };
    const auto plane = [&] { return FloatPlane(m.width, m.height); };
    FloatPlane a = plane(), v = plane(), own = plane(), other = plane(), own1 = plane(), other1 = plane();
    Plane<char> alongRow(m.width, m.height);
    a.Fill(4, [&](int y, int x) { return std::fabs(r.across(y, x) - r.across(y, x + 2)); });
    v.Fill(4, [&](int y, int x) { return std::fabs(r.down(y, x) - r.down(y + 2, x)); });
    alongRow.Fill(6, [&](int y, int x) {
        const float row = (3.0F * (a(y, x) + a(y, x - 2)) +
                           ((a(y - 2, x) + a(y - 2, x - 2)) + (a(y + 2, x) + a(y + 2, x - 2)))) +
                          (a(y - 1, x - 1) + a(y + 1, x - 1));
        const float column = (3.0F * (v(y, x) + v(y - 2, x)) +
                              ((v(y, x - 2) + v(y - 2, x - 2)) + (v(y, x + 2) + v(y - 2, x + 2)))) +
                             (v(y - 1, x - 1) + v(y - 1, x + 1));
        return static_cast<char>(column >= row);
    });
    const auto colorSites = [&](FloatPlane& q, int skip, const std::function<float(int, int)>& f) {
        q.Fill(skip, [&](int y, int x) { return green(y, x) ? 0.0F : f(y, x); });
    };
    const auto greenSites = [&](FloatPlane& q, int skip, const std::function<float(int, int)>& f) {
        q.Fill(skip, [&](int y, int x) { return green(y, x) ? f(y, x) : q(y, x); });
    };
    const auto beside = [](const FloatPlane& q, int y, int x) { return 0.5F * (q(y, x - 1) + q(y, x + 1)); };
    const auto upright = [](const FloatPlane& q, int y, int x) { return 0.5F * (q(y - 1, x) + q(y + 1, x)); };
    // Sum over both neighbours, along the chosen direction, of what the other colour exceeds the own one by.
    const auto excess = [&](const FloatPlane& o, const FloatPlane& c, int y, int x) {
        return alongRow(y, x) ? (o(y, x - 1) - c(y, x - 1)) + (o(y, x + 1) - c(y, x + 1))
                              : (c(y - 1, x) - o(y - 1, x)) + (c(y + 1, x) - o(y + 1, x));
    };
    colorSites(own, 6, [&](int y, int x) { return -(alongRow(y, x) ? r.across(y, x) : r.down(y, x)); });
    greenSites(own, 7, [&](int y, int x) { return beside(own, y, x); });
    greenSites(other, 8, [&](int y, int x) { return upright(own, y, x); });
    const FloatPlane atGreen = other;
    other.Fill(9, [&](int y, int x) {
        return green(y, x) ? atGreen(y, x) : own(y, x) + 0.5F * excess(atGreen, own, y, x);
    });
    colorSites(own1, 10, [&](int y, int x) {
        const float sides =
            alongRow(y, x) ? own(y, x - 1) + own(y, x + 1) : other(y - 1, x) + other(y + 1, x);
        return 1.0F / 3 * (sides + own(y, x));
    });
    greenSites(own1, 11, [&](int y, int x) { return beside(own1, y, x); });
    greenSites(other1, 12, [&](int y, int x) { return upright(own1, y, x); });
    return RenderFloats(m, [&](int y, int x) {
        const float c = r.mosaic(y, x);
        if (green(y, x)) {
            return Floats{c + own1(y, x), c, c + other1(y, x)};
        }
        const float less = 1.0F / 3 * (excess(other1, own1, y, x) + (other(y, x) - own(y, x)));
        return Floats{c, c - own1(y, x), c + less};
    });
}

float Five(float a, float b, float c, float d, float e) {
    return ((a + d) + (b + e)) + c;
}

template <class T>
std::vector<T> Weighted(const Mosaic<T>& m) {
    const Differences r = DifferencesOf(m);
    const auto green = [&](int y, int x) { return ColorAt(m.phase, y, x) == 1; };
    const auto plane = [&] { return FloatPlane(m.width, m.height); };
    FloatPlane a = plane(), v = plane(), sumA = plane(), sumV = plane(), own = plane(), other = plane();
    a.Fill(3, [&](int y, int x) { return std::fabs(r.across(y, x - 1) - r.across(y, x + 1)); });
    v.Fill(3, [&](int y, int x) { return std::fabs(r.down(y - 1, x) - r.down(y + 1, x)); });
    sumV.Fill(
        5, [&](int y, int x) { return Five(v(y, x - 2), v(y, x - 1), v(y, x), v(y, x + 1), v(y, x + 2)); });
    sumA.Fill(
        5, [&](int y, int x) { return Five(a(y - 2, x), a(y - 1, x), a(y, x), a(y + 1, x), a(y + 2, x)); });
    own.Fill(9, [&](int y, int x) {
        const auto row = [&](const FloatPlane& q, int s) {
            return Five(q(y, x), q(y, x + s), q(y, x + 2 * s), q(y, x + 3 * s), q(y, x + 4 * s));
        };
        const auto column = [&](const FloatPlane& q, int s) {
            return Five(q(y, x), q(y + s, x), q(y + 2 * s, x), q(y + 3 * s, x), q(y + 4 * s, x));
        };
        const auto weight = [](float sum) { return 1.0F / ((sum + 0.1F) * (sum + 0.1F)); };
        const float n = weight(column(sumV, -1)), s = weight(column(sumV, 1));
        const float w = weight(row(sumA, -1)), e = weight(row(sumA, 1));
        const float sum =
            (n * column(r.down, -1) + s * column(r.down, 1)) + (w * row(r.across, -1) + e * row(r.across, 1));
        return 0.2F * sum / ((n + s) + (w + e));
    });
    other.Fill(12, [&](int y, int x) {
        const auto sides = [&](int dy, int dx) { return own(y + dy, x - dx) + own(y + dy, x + dx); };
        const float near = sides(-1, 1) + sides(1, 1);
        const float far = (sides(-3, 1) + sides(3, 1)) + (sides(-1, 3) + sides(1, 3));
        return 1.0F / 32 * (10.0F * near - far);
    });
    return RenderFloats(m, [&](int y, int x) {
        const float c = r.mosaic(y, x);
        if (!green(y, x)) {
            const float g = c + own(y, x);
            return Floats{c, g, g - other(y, x)};
        }
        const auto mean = [&](const FloatPlane& beside, const FloatPlane& upright) {
            return 0.25F * ((beside(y, x - 1) + beside(y, x + 1)) + (upright(y - 1, x) + upright(y + 1, x)));
        };
        return Floats{c - mean(own, other), c, c - mean(other, own)};
    });
}

template <class T>
std::vector<T> Rigorous(const Mosaic<T>& m) {
    const Differences r = DifferencesOf(m);
    const auto green = [&](int y, int x) { return ColorAt(m.phase, y, x) == 1; };
    const auto plane = [&] { return FloatPlane(m.width, m.height); };
    static constexpr float kShares[5] = {26.0F / 128, 23.0F / 128, 15.0F / 128, 9.0F / 128, 4.0F / 128};

    // One direction's differences freed of noise.
    const auto clean = [&](const FloatPlane& d, int dy, int dx) {
        FloatPlane smooth = plane(), noise = plane(), out = plane();
        smooth.Fill(6, [&](int y, int x) {
            float sum = kShares[0] * d(y, x);
            for (int k = 1; k <= 4; ++k) {
                sum = sum + kShares[k] * (d(y - k * dy, x - k * dx) + d(y + k * dy, x + k * dx));
            }
            return sum;
        });
        noise.Fill(6, [&](int y, int x) { return (d(y, x) - smooth(y, x)) * (d(y, x) - smooth(y, x)); });
        out.Fill(10, [&](int y, int x) {
            float mean = 0, noisePower = 0, power = 0;
            for (int k = -4; k <= 4; ++k) {
                mean = mean + smooth(y + k * dy, x + k * dx);
                noisePower = noisePower + noise(y + k * dy, x + k * dx);
            }
            mean = mean * (1.0F / 9);
            for (int k = -4; k <= 4; ++k) {
                const float deviation = smooth(y + k * dy, x + k * dx) - mean;
                power = power + deviation * deviation;
            }
            return mean + power / ((power + noisePower) + 0.01F) * (d(y, x) - mean);
        });
        return out;
    };
    const FloatPlane cleanA = clean(r.across, 0, 1), cleanV = clean(r.down, 1, 0);

    FloatPlane a = plane(), v = plane(), sumA = plane(), sumV = plane(), own = plane(), rowShare = plane(),
               g = plane(), other = plane();
    a.Fill(3, [&](int y, int x) { return std::fabs(r.across(y, x - 1) - r.across(y, x + 1)); });
    v.Fill(3, [&](int y, int x) { return std::fabs(r.down(y - 1, x) - r.down(y + 1, x)); });
    sumV.Fill(4, [&](int y, int x) { return (v(y, x - 1) + v(y, x + 1)) + v(y, x); });
    sumA.Fill(4, [&](int y, int x) { return (a(y - 1, x) + a(y + 1, x)) + a(y, x); });
    for (int y = -4; y < m.height + 4; ++y) {
        for (int x = -4; x < m.width + 4; ++x) {
            const auto weight = [&](const FloatPlane& q, int dy, int dx) {
                float sum = 0.1F;
                for (int k = 0; k <= 4; ++k) {
                    sum = sum + q(y + k * dy, x + k * dx);
                }
                return 1.0F / (sum * sum * sum);
            };
            const auto mean = [&](const FloatPlane& q, int dy, int dx) {
                return (q(y, x) + 0.5F * q(y + dy, x + dx)) + 0.25F * q(y + 2 * dy, x + 2 * dx);
            };
            const float west = weight(sumA, 0, -1), east = weight(sumA, 0, 1);
            const float north = weight(sumV, -1, 0), south = weight(sumV, 1, 0);
            const float sum = (west * mean(cleanA, 0, -1) + east * mean(cleanA, 0, 1)) +
                              (north * mean(cleanV, -1, 0) + south * mean(cleanV, 1, 0));
            const float all = (west + east) + (north + south);
            own(y, x) = 1.0F / 1.75F * sum / all;
            rowShare(y, x) = (west + east) / all;
            g(y, x) = green(y, x) ? r.mosaic(y, x) : r.mosaic(y, x) + own(y, x);
        }
    }
    for (int y = -1; y < m.height + 1; ++y) {
        for (int x = -1; x < m.width + 1; ++x) {
            const auto change = [&](int dx) {
                const float greens =
                    std::fabs(g(y - 1, x - dx) - g(y, x)) + std::fabs(g(y + 1, x + dx) - g(y, x));
                const float sum = (std::fabs(own(y - 1, x - dx) - own(y + 1, x + dx)) + greens) + 2.0F;
                return sum * sum;
            };
            const float falling = change(1), rising = change(-1);
            const float onFalling = own(y - 1, x - 1) + own(y + 1, x + 1);
            const float onRising = own(y - 1, x + 1) + own(y + 1, x - 1);
            const auto sides = [&](int dy, int dx) { return own(y + dy, x - dx) + own(y + dy, x + dx); };
            const float far = (sides(-3, 1) + sides(3, 1)) + (sides(-1, 3) + sides(1, 3));
            other(y, x) = 0.5F * (rising * onFalling + falling * onRising) / (falling + rising) +
                          1.0F / 32 * (2.0F * (onFalling + onRising) - far);
        }
    }
    return RenderFloats(m, [&](int y, int x) {
        if (!green(y, x)) {
            return Floats{r.mosaic(y, x), g(y, x), g(y, x) - other(y, x)};
        }
        const auto mean = [&](const FloatPlane& beside, const FloatPlane& upright) {
            const float onRow = 0.5F * (beside(y, x - 1) + beside(y, x + 1));
            const float onColumn = 0.5F * (upright(y - 1, x) + upright(y + 1, x));
            return onColumn + rowShare(y, x) * (onRow - onColumn);
        };
        return Floats{g(y, x) - mean(own, other), g(y, x), g(y, x) - mean(other, own)};
    });
}

} // namespace

template <class T>
std::vector<T> ScalarDemosaic(ColorProcessingAlgorithm algorithm, const Mosaic<T>& mosaic) {
    switch (algorithm) {
    case DIRECTIONAL_FILTER:
        return Directional(mosaic);
    case WEIGHTED_DIRECTIONAL_FILTER:
        return Weighted(mosaic);
    case RIGOROUS:
        return Rigorous(mosaic);
    default:
        return Integers(algorithm, mosaic);
    }
}

template std::vector<std::uint8_t> ScalarDemosaic(ColorProcessingAlgorithm, const Mosaic<std::uint8_t>&);
template std::vector<std::uint16_t> ScalarDemosaic(ColorProcessingAlgorithm, const Mosaic<std::uint16_t>&);

} // namespace Norvane::Test
