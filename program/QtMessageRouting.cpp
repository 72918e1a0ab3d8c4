#include "program/QtMessageRouting.h"

#include "program/LogManager.h"

#include <QtGlobal>

#include <atomic>
#include <cstring>

namespace Ond::Core {

namespace {

QtMessageHandler g_previousHandler = nullptr;
std::atomic<bool> g_installed{false};

void routeMessage(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    int level = LogInfo;
    switch (type) {
    case QtDebugMsg:
    case QtInfoMsg:
        level = LogInfo;
        break;
    case QtWarningMsg:
        level = LogWarning;
        break;
    case QtCriticalMsg:
    case QtFatalMsg:
        level = LogError;
        break;
    }
    const char* category = context.category;
    const QString channel = (category && *category && std::strcmp(category, "default") != 0)
                                ? QString::fromUtf8(category)
                                : QStringLiteral("Qt");
    LogManager::instance().log(level, channel, message);
}

} // namespace

void installQtMessageRouting()
{
    if (g_installed.exchange(true))
        return;
    g_previousHandler = qInstallMessageHandler(routeMessage);
}

void removeQtMessageRouting()
{
    if (!g_installed.exchange(false))
        return;
    qInstallMessageHandler(g_previousHandler);
    g_previousHandler = nullptr;
}

} // namespace Ond::Core
