// Shows three moving items in the tray, to look at how a host draws them (scripts/see-tray.sh).

#include <cmath>
#include <cstdio>

#include <QGuiApplication>
#include <QPainter>
#include <QTimer>

#include "statusbar/TrayBar.h"

namespace {

using namespace vostel;

// Bars under a ramp of colour with a ring at the left: a squeezed or blurred image shows at once.
StatusImage drawBars(const ImageContext& context, int step) {
    const bool wide = context.shape == ImageShape::Wide;
    const QSizeF size(wide ? 86.0 : context.thickness, context.thickness);
    QImage image((size * context.scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(context.scale);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor label = context.appearance == Appearance::Dark ? Qt::white : Qt::black;
    const double left = wide ? size.height() : 1.0;
    const double highest = wide ? size.height() : 7.0;
    for (double x = left; x + 3.0 <= size.width(); x += 4.0) {
        const double height = std::round((0.55 + 0.4 * std::sin(0.3 * x + 0.5 * step)) * highest);
        painter.fillRect(QRectF(x, size.height() - height, 3.0, height),
                         QColor::fromHsvF(static_cast<float>(x / size.width()) * 0.8F, 0.8F, 1.0F));
    }
    painter.setPen(QPen(label, 1.5));
    if (wide) {
        painter.drawEllipse(QRectF(2.0, 2.0, size.height() - 4.0, size.height() - 4.0));
    }
    QFont font = painter.font();
    font.setPixelSize(wide ? 10 : 13);
    font.setWeight(QFont::Medium);
    painter.setFont(font);
    painter.drawText(QRectF(0.0, 0.0, size.height(), wide ? size.height() : 15.0), Qt::AlignCenter,
                     QString::number(step % 100));
    return {image, size, false};
}

void show(StatusItem& item, int step) {
    std::vector<StatusImage> images;
    for (const ImageContext& context : item.wantedImages()) {
        images.push_back(drawBars(context, step));
    }
    item.setImages(std::move(images));
    item.setToolTip(QStringLiteral("Demo"), QStringLiteral("step %1 <of> many").arg(step));
}

}  // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    QString error;
    const auto bar = TrayBar::make({}, &error);
    if (bar == nullptr) {
        std::fprintf(stderr, "[Vostel] %s\n", qUtf8Printable(error));
        return 1;
    }
    int step = 40;
    std::vector<std::unique_ptr<StatusItem>> items;
    for (int i = 0; i < 3; ++i) {
        items.push_back(bar->makeItem(QStringLiteral("vostel.demo%1").arg(i)));
        StatusItem* item = items.back().get();
        QObject::connect(item, &StatusItem::clicked, item, [i](const StatusItemClick& click) {
            std::printf("item %d: button %d at %d,%d\n", i, static_cast<int>(click.button),
                        click.globalPosition.x(), click.globalPosition.y());
            std::fflush(stdout);
        });
        QObject::connect(item, &StatusItem::imagesWanted, item,
                         [item, i, &step] { show(*item, step + 7 * i); });
        show(*item, step + 7 * i);
    }
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        ++step;
        for (std::size_t i = 0; i < items.size(); ++i) {
            show(*items[i], step + 7 * static_cast<int>(i));
        }
    });
    timer.start(1000);
    return app.exec();
}
