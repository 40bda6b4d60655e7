#include "statusbar/tests/XServer.h"

#include <signal.h>
#include <sys/prctl.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include "statusbar/X11Reply.h"

namespace vostel {

namespace {

constexpr int limit = 10000;  // ms before something counts as never happening

[[noreturn]] void fail(const QString& what) {
    std::fprintf(stderr, "%s\n", qPrintable(what));
    std::_Exit(1);
}

// Politely: an X server that is killed leaves its socket and its lock in /tmp.
void endWithParent(QProcess& process) {
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
}

void end(QProcess& process) {
    process.terminate();
    if (!process.waitForFinished(limit)) {
        process.kill();
        process.waitForFinished();
    }
}

}  // namespace

XServer::XServer(int width, int height, int depth) {
    endWithParent(server);
    endWithParent(manager);
    // -noreset: the server outlives its last client. -displayfd 1: it picks a free number.
    server.start(QStringLiteral("Xvfb"),
                 {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                  QStringLiteral("0"), QStringLiteral("%1x%2x%3").arg(width).arg(height).arg(depth),
                  QStringLiteral("-dpi"), QStringLiteral("96"), QStringLiteral("-noreset"),
                  QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    QByteArray number;
    while (!number.endsWith('\n')) {
        if (!server.waitForReadyRead(limit)) fail(QStringLiteral("Xvfb does not start"));
        number += server.readAllStandardOutput();
    }
    qputenv("DISPLAY", ':' + number.trimmed());
    manager.start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
    connection = xcb_connect(nullptr, nullptr);
    QElapsedTimer waited;
    waited.start();
    while (!run(QStringLiteral("xprop"),
                {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")})
                .contains(QStringLiteral("window id"))) {
        if (waited.elapsed() > limit) fail(QStringLiteral("openbox does not start"));
    }
}

XServer::~XServer() {
    xcb_disconnect(connection);
    end(manager);
    end(server);
    const QString lock =
        QStringLiteral("/tmp/.X%1-lock").arg(qEnvironmentVariable("DISPLAY").mid(1));
    if (QFile::exists(lock)) fail(QStringLiteral("Xvfb left ") + lock);
}

void XServer::freeze() {
    ::kill(static_cast<pid_t>(server.processId()), SIGSTOP);
}

void XServer::thaw() {
    ::kill(static_cast<pid_t>(server.processId()), SIGCONT);
}

QString XServer::run(const QString& program, const QStringList& arguments, int tries) {
    QProcess process;
    process.start(program, arguments);
    QElapsedTimer waited;
    waited.start();
    // It may end inside processEvents(), too.
    while (process.state() != QProcess::NotRunning && !process.waitForFinished(5)) {
        if (waited.elapsed() > limit) fail(program + QStringLiteral(" does not end"));
        if (QCoreApplication::instance()) QCoreApplication::processEvents();
    }
    if (process.error() == QProcess::FailedToStart) {
        fail(program + QStringLiteral(": ") + process.errorString());
    }
    if (process.exitCode() != 0) {
        const QString complaint = QString::fromUtf8(process.readAllStandardError());
        // A window went away while the tool looked at it.
        if (tries > 1 && complaint.contains(QStringLiteral("BadWindow"))) {
            return run(program, arguments, tries - 1);
        }
        fail(program + QStringLiteral(": ") + complaint);
    }
    return QString::fromUtf8(process.readAllStandardOutput());
}

QImage XServer::grab(const QRect& rect) {
    const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const auto reply = owned(xcb_get_image_reply(
        connection,
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root,
                      static_cast<std::int16_t>(rect.x()), static_cast<std::int16_t>(rect.y()),
                      static_cast<std::uint16_t>(rect.width()),
                      static_cast<std::uint16_t>(rect.height()), ~0u),
        nullptr));
    if (!reply) return {};
    const bool small = reply->depth == 16;
    const int line = small ? (rect.width() * 2 + 3) / 4 * 4 : rect.width() * 4;
    return QImage(xcb_get_image_data(reply.get()), rect.width(), rect.height(), line,
                  small ? QImage::Format_RGB16 : QImage::Format_RGB32)
        .convertToFormat(QImage::Format_RGB32)
        .copy();
}

bool XServer::until(const std::function<bool()>& condition) {
    QElapsedTimer waited;
    waited.start();
    while (!condition()) {
        if (waited.elapsed() > limit) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(2);
    }
    return true;
}

}  // namespace vostel
