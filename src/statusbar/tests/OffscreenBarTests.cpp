#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "statusbar/OffscreenBar.h"
#include "statusbar/tests/MemoryOrder.h"

using namespace vostel;

namespace {

StatusImage plain(int width, QColor color, const ImageContext& context) {
    StatusImage result;
    result.size = QSizeF(width, context.thickness);
    result.image =
        QImage((result.size * context.scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    result.image.setDevicePixelRatio(context.scale);
    result.image.fill(color);
    return result;
}

void show(StatusItem& item, int width, QColor color, const char* value) {
    item.setImages({plain(width, color, item.wantedImages().front())});
    item.setToolTip(QStringLiteral("title"), QString::fromUtf8(value));
}

// What the event loop has ready now, timers that are due included.
void turn() {
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
}

struct Stream {
    std::FILE* file = std::tmpfile();
    ~Stream() { std::fclose(file); }
    int descriptor() const { return fileno(file); }
    std::string text() const {
        char bytes[1000];
        const ssize_t n = pread(descriptor(), bytes, sizeof bytes, 0);
        return {bytes, static_cast<std::size_t>(std::max<ssize_t>(n, 0))};
    }
};

}  // namespace

TEST(OffscreenBar, oneLineForEachTurnHoweverManyItemsReport) {
    Stream stream;
    MemoryOrder order;
    OffscreenBarOptions options;
    options.text = stream.descriptor();
    options.textInterval = 0;
    options.now = [] { return QTime(9, 5, 7); };
    OffscreenBar bar(order, options);
    const auto cpu = bar.makeItem(QStringLiteral("cpu"));
    auto memory = bar.makeItem(QStringLiteral("memory"));
    turn();
    EXPECT_EQ(stream.text(), "");  // nothing to say yet
    show(*cpu, 20, Qt::red, "CPU 12 %");
    show(*memory, 20, Qt::red, "Memory\n40 %");
    turn();
    show(*cpu, 20, Qt::red, "CPU 13 %");
    memory.reset();
    turn();
    EXPECT_EQ(stream.text(), "09:05:07  CPU 12 %  Memory 40 %\n09:05:07  CPU 13 %\n");
}

TEST(OffscreenBar, writesWholeImagesAndOnlyChangedOnes) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("bar.png"));
    MemoryOrder order;
    OffscreenBarOptions options;
    options.imagePath = path;
    options.imageInterval = 0;
    options.scale = 2;
    OffscreenBar bar(order, options);
    turn();
    EXPECT_EQ(QImage(path).size(), QSize(44, 44));  // empty, and a bar all the same
    const auto item = bar.makeItem(QStringLiteral("cpu"));
    show(*item, 30, Qt::green, "");
    turn();
    const QImage image(path);
    EXPECT_EQ(image.height(), 44);
    EXPECT_EQ(image.pixelColor(image.width() / 2, 10), QColor(Qt::green));
    EXPECT_EQ(bar.image().size(), image.size());

    QFile::remove(path);
    show(*item, 30, Qt::green, "other text, same pixels");
    turn();
    EXPECT_FALSE(QFile::exists(path));
    show(*item, 30, Qt::blue, "");
    turn();
    EXPECT_EQ(QImage(path).pixelColor(image.width() / 2, 10), QColor(Qt::blue));
    EXPECT_FALSE(QFile::exists(path + QStringLiteral(".tmp")));
}

// Links that somebody put into a shared folder, at the image's place and at the temporary file's.
TEST(OffscreenBar, writesThroughNoLink) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("bar.png"));
    const QString victim = folder.filePath(QStringLiteral("victim"));
    QFile file(victim);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("precious");
    file.close();
    MemoryOrder order;
    OffscreenBarOptions options;
    options.imagePath = path;
    options.imageInterval = 0;
    for (const QString& link : {path, path + QStringLiteral(".tmp")}) {
        QFile::remove(path);
        ASSERT_TRUE(QFile::link(victim, link));
        OffscreenBar bar(order, options);
        turn();
        EXPECT_EQ(QImage(path).height(), 22) << link.toStdString();
        EXPECT_FALSE(QFileInfo(path).isSymLink()) << link.toStdString();
        EXPECT_FALSE(QFileInfo(path + QStringLiteral(".tmp")).isSymLink()) << link.toStdString();
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), "precious") << link.toStdString();
        file.close();
    }
}

// A full or missing folder must neither stop the program nor flood its log.
TEST(OffscreenBar, saysOnceThatItCannotWriteAndGoesOn) {
    const QTemporaryDir folder;
    MemoryOrder order;
    OffscreenBarOptions options;
    options.imagePath = folder.filePath(QStringLiteral("missing/bar.png"));
    options.imageInterval = 0;
    testing::internal::CaptureStderr();
    OffscreenBar bar(order, options);
    const auto item = bar.makeItem(QStringLiteral("cpu"));
    for (const QColor color : {Qt::red, Qt::green, Qt::blue}) {
        show(*item, 10, color, "");
        turn();
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    ASSERT_EQ(::mkdir(qPrintable(folder.filePath(QStringLiteral("missing"))), 0700), 0);
    show(*item, 10, Qt::white, "");
    turn();
    EXPECT_TRUE(QFile::exists(options.imagePath));
}

TEST(OffscreenBar, scaleAndAppearanceReachTheItemsAtOnce) {
    MemoryOrder order;
    OffscreenBar bar(order);
    const auto item = bar.makeItem(QStringLiteral("cpu"));
    const auto draw = [&] { show(*item, 30, Qt::red, ""); };
    QObject::connect(item.get(), &StatusItem::imagesWanted, draw);
    draw();
    const QImage before = bar.image();
    OffscreenBarOptions options;
    options.scale = 1.25;
    options.appearance = Appearance::Light;
    bar.setOptions(options);
    EXPECT_EQ(item->wantedImages().front().appearance, Appearance::Light);
    EXPECT_EQ(bar.image().height(), 28);  // 22 points are 27.5 pixels: never half a pixel
    EXPECT_EQ(item->wantedImages().front().thickness * 1.25, 28);
    EXPECT_NE(bar.image().pixelColor(0, 0), before.pixelColor(0, 0));
}

TEST(OffscreenBar, clicksReachTheItemAndItMayGo) {
    MemoryOrder order;
    auto bar = std::make_unique<OffscreenBar>(order);
    auto first = bar->makeItem(QStringLiteral("first"));
    auto second = bar->makeItem(QStringLiteral("second"));
    show(*first, 10, Qt::red, "");
    show(*second, 10, Qt::red, "");
    std::vector<Qt::MouseButton> seen;
    QObject::connect(second.get(), &StatusItem::clicked, [&](const StatusItemClick& click) {
        seen.push_back(click.button);
        EXPECT_TRUE(second->screenRect()->contains(click.globalPosition));
        second.reset();
    });
    EXPECT_TRUE(bar->click(QStringLiteral("second"), Qt::RightButton));
    EXPECT_FALSE(bar->click(QStringLiteral("second")));
    EXPECT_EQ(seen, std::vector{Qt::RightButton});
    bar.reset();  // items may outlive their bar
    show(*first, 10, Qt::blue, "");
    EXPECT_EQ(first->screenRect(), std::nullopt);
}
