// What most files include, for builds with VOSTEL_PCH. Nothing of our own: it would be compiled
// anew too often.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QApplication>
#include <QBoxLayout>
#include <QColor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>
#include <QVariant>
#include <QWidget>
#include <QWindow>
