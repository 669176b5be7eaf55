#include "ImageOperations.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// Where a Gaussian is cut off, in standard deviations.
constexpr qreal sigmas = 3;
constexpr int bandRows = 32;

std::vector<float> gaussianKernel(qreal sigma) {
    const int reach = static_cast<int>(std::ceil(sigma * sigmas));
    std::vector<float> kernel(static_cast<size_t>(2 * reach + 1));
    double sum = 0;
    for (int i = -reach; i <= reach; ++i) {
        const double weight = std::exp(-(i * i) / (2 * sigma * sigma));
        kernel.data()[i + reach] = static_cast<float>(weight);
        sum += weight;
    }
    for (float& weight : kernel) {
        weight = static_cast<float>(weight / sum);
    }
    return kernel;
}

// Blurs each of `rows` rows of `length` values and writes them as columns, so that two calls blur
// both ways.
std::vector<float> blurredAndTurned(const std::vector<float>& values, int rows, int length,
                                    const std::vector<float>& kernel) {
    const int reach = static_cast<int>(kernel.size() / 2);
    std::vector<float> result(values.size());
    for (int row = 0; row < rows; ++row) {
        const float* line = values.data() + static_cast<ptrdiff_t>(row) * length;
        for (int i = 0; i < length; ++i) {
            float sum = 0;
            const int first = std::max(0, i - reach);
            const int last = std::min(length - 1, i + reach);
            for (int k = first; k <= last; ++k) {
                sum += line[k] * kernel.data()[k - i + reach];
            }
            result[static_cast<size_t>(i) * static_cast<size_t>(rows) + static_cast<size_t>(row)] =
                sum;
        }
    }
    return result;
}

template <typename Change>
void changePixels(QImage& image, Change change) {
    for (int y = 0; y < image.height(); ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (line[x] != 0) {
                line[x] = change(line[x]);
            }
        }
    }
}

// A premultiplied component, which cannot be more than its pixel's coverage.
int component(qreal value, int alpha) {
    return std::clamp(qRound(value), 0, alpha);
}

// Makes the painter's unit the device pixel, counted from the device's own corner.
void useDevicePixels(QPainter& painter) {
    painter.setWorldTransform(QTransform());
    painter.setWorldTransform(painter.deviceTransform().inverted());
}

}  // namespace

QImage ImageOperations::transparent(const QSizeF& size, qreal ratio) {
    QImage image(static_cast<int>(std::ceil(size.width() * ratio - 1e-6)),
                 static_cast<int>(std::ceil(size.height() * ratio - 1e-6)),
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    return image;
}

QImage ImageOperations::blurredSilhouette(const QImage& image, qreal sigma, const QColor& colour) {
    const int width = image.width();
    const int height = image.height();
    std::vector<float> coverage;
    coverage.reserve(static_cast<size_t>(width) * static_cast<size_t>(height));
    for (int y = 0; y < height; ++y) {
        const QRgb* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < width; ++x) {
            coverage.push_back(static_cast<float>(qAlpha(line[x])) / 255);
        }
    }
    if (sigma > 0) {
        const std::vector<float> kernel = gaussianKernel(sigma);
        coverage = blurredAndTurned(blurredAndTurned(coverage, height, width, kernel), width,
                                    height, kernel);
    }

    QImage result(image.size(), QImage::Format_ARGB32_Premultiplied);
    result.setDevicePixelRatio(image.devicePixelRatio());
    const float opacity = static_cast<float>(colour.alpha());
    size_t index = 0;
    for (int y = 0; y < height; ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(result.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const float alpha = coverage[index++] * opacity;
            const auto premultiplied = [&](int full) {
                return qRound(static_cast<float>(full) * alpha / 255);
            };
            line[x] = qRgba(premultiplied(colour.red()), premultiplied(colour.green()),
                            premultiplied(colour.blue()), qRound(alpha));
        }
    }
    return result;
}

void ImageOperations::addBrightness(QImage& image, qreal amount) {
    changePixels(image, [amount](QRgb pixel) {
        const int alpha = qAlpha(pixel);
        const qreal step = amount * alpha;
        return qRgba(component(qRed(pixel) + step, alpha), component(qGreen(pixel) + step, alpha),
                     component(qBlue(pixel) + step, alpha), alpha);
    });
}

void ImageOperations::scaleSaturation(QImage& image, qreal factor) {
    changePixels(image, [factor](QRgb pixel) {
        const int alpha = qAlpha(pixel);
        const qreal luminance =
            0.2126 * qRed(pixel) + 0.7152 * qGreen(pixel) + 0.0722 * qBlue(pixel);
        const auto towards = [&](int value) {
            return component(luminance + (value - luminance) * factor, alpha);
        };
        return qRgba(towards(qRed(pixel)), towards(qGreen(pixel)), towards(qBlue(pixel)), alpha);
    });
}

void ImageOperations::scaleOpacity(QImage& image, qreal factor) {
    changePixels(image, [factor](QRgb pixel) {
        return qRgba(qRound(qRed(pixel) * factor), qRound(qGreen(pixel) * factor),
                     qRound(qBlue(pixel) * factor), qRound(qAlpha(pixel) * factor));
    });
}

int ImageOperations::linePixels(qreal ratio) {
    return std::max(1, qRound(ratio));
}

void ImageOperations::drawAligned(QPainter& painter, const QPointF& corner, const QImage& image) {
    const QPointF device = painter.deviceTransform().map(corner);
    painter.save();
    // A plain copy of pixels, which at fractional ratios costs a tenth of a transformation.
    useDevicePixels(painter);
    const QRectF pixels(image.rect());
    const QPointF whole(std::round(device.x()), std::round(device.y()));
    painter.drawImage(pixels.translated(whole), image, pixels);
    painter.restore();
}

void ImageOperations::drawScaled(QPainter& painter, const QPointF& centre, const QImage& image,
                                 qreal scale) {
    const QPointF middle = painter.deviceTransform().map(centre);
    const QSizeF size = QSizeF(image.size()) * scale;
    const QRectF target(middle - QPointF(size.width() / 2, size.height() / 2), size);
    painter.save();
    useDevicePixels(painter);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    // In bands: Qt spreads the painting of more rows over threads, and to wake those costs more
    // than they help with so small an image.
    const QRect area = target.toAlignedRect();
    for (int top = area.top(); top <= area.bottom(); top += bandRows) {
        painter.save();
        painter.setClipRect(QRect(area.left(), top, area.width(), bandRows), Qt::IntersectClip);
        painter.drawImage(target, image);
        painter.restore();
    }
    painter.restore();
}
