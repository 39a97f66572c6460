// Prints how close each demosaicing method comes to the truth: colour PSNR in dB over all three channels,
// after a mosaic is taken of a photograph and turned back into colour. A border of ten pixels is left out.
//
//   imaging_quality PHOTOGRAPH.png ...

#include "norvane/Image.h"

#include <png.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace Norvane;

struct Photograph {
    std::string name;
    std::size_t width = 0, height = 0;
    std::vector<std::uint8_t> rgb;
};

bool Load(const char* file, Photograph& photograph) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&png, file)) {
        std::fprintf(stderr, "%s: %s\n", file, png.message);
        return false;
    }
    png.format = PNG_FORMAT_RGB;
    const std::string path = file;
    photograph.name = path.substr(path.rfind('/') + 1);
    photograph.width = png.width;
    photograph.height = png.height;
    photograph.rgb.resize(PNG_IMAGE_SIZE(png));
    return png_image_finish_read(&png, nullptr, photograph.rgb.data(), 0, nullptr) != 0;
}

std::vector<std::uint8_t> MosaicOf(const Photograph& p) {
    std::vector<std::uint8_t> mosaic(p.width * p.height);
    for (std::size_t y = 0; y < p.height; ++y) {
        for (std::size_t x = 0; x < p.width; ++x) {
            const std::size_t color = y % 2 + x % 2; // red, green, blue
            mosaic[y * p.width + x] = p.rgb[(y * p.width + x) * 3 + color];
        }
    }
    return mosaic;
}

double Psnr(const Photograph& p, const std::uint8_t* rgb, std::size_t border) {
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t y = border; y + border < p.height; ++y) {
        for (std::size_t i = (y * p.width + border) * 3; i < ((y + 1) * p.width - border) * 3; ++i) {
            const double error = double(rgb[i]) - p.rgb[i];
            sum += error * error;
            ++count;
        }
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(count) / sum);
}

struct Method {
    const char* name;
    ColorProcessingAlgorithm algorithm;
};

constexpr Method kMethods[] = {
    {"nearest", NEAREST_NEIGHBOR},
    {"nearest average", NEAREST_NEIGHBOR_AVG},
    {"bilinear", BILINEAR},
    {"edge sensing", EDGE_SENSING},
    {"HQ linear", HQ_LINEAR},
    {"directional", DIRECTIONAL_FILTER},
    {"weighted directional", WEIGHTED_DIRECTIONAL_FILTER},
    {"rigorous", RIGOROUS},
};

} // namespace

int main(int argc, char** argv) {
    std::vector<Photograph> photographs(static_cast<std::size_t>(argc - 1));
    std::printf("%-22s", "CPSNR, dB");
    for (std::size_t i = 0; i < photographs.size(); ++i) {
        if (!Load(argv[i + 1], photographs[i])) {
            return 1;
        }
        std::printf(" %14s", photographs[i].name.c_str());
    }
    std::printf(" %8s  %s\n", "mean", "mean with the border");
    for (const Method& method : kMethods) {
        double sum = 0, whole = 0;
        std::printf("%-22s", method.name);
        for (const Photograph& p : photographs) {
            std::vector<std::uint8_t> mosaic = MosaicOf(p);
            const ImagePtr image =
                Image::Create(p.width, p.height, 0, 0, PixelFormat_BayerRG8, mosaic.data());
            const ImagePtr color = image->Convert(PixelFormat_RGB8, method.algorithm);
            const auto* rgb = static_cast<const std::uint8_t*>(color->GetData());
            const double psnr = Psnr(p, rgb, 10);
            sum += psnr;
            whole += Psnr(p, rgb, 0);
            std::printf(" %14.2f", psnr);
        }
        const auto count = static_cast<double>(photographs.size());
        std::printf(" %8.3f  %.3f\n", sum / count, whole / count);
    }
    return 0;
}
