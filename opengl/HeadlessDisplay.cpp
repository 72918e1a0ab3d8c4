#include "opengl/HeadlessDisplay.h"

#include <QByteArray>
#include <QStandardPaths>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace Ond::OpenGLUtils {

namespace {

bool envSet(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value;
}

// Mesa writes its shader cache under HOME; a read-only or missing HOME would
// make every start compile from scratch and complain.
void ensureShaderCacheDir()
{
    if (envSet("MESA_SHADER_CACHE_DIR"))
        return;
    const char* home = std::getenv("HOME");
    if (home && *home && access(home, W_OK) == 0)
        return;
    setenv("MESA_SHADER_CACHE_DIR", "/tmp/zmfbaker-mesa-cache", 1);
}

// Without XDG_RUNTIME_DIR Qt prints a warning on every start, which scripts
// would read as noise: give it the directory it would pick anyway.
void ensureRuntimeDir()
{
    if (envSet("XDG_RUNTIME_DIR"))
        return;
    const std::string dir = "/tmp/runtime-" + std::to_string(getuid());
    mkdir(dir.c_str(), 0700);
    struct stat info{};
    if (stat(dir.c_str(), &info) == 0 && info.st_uid == getuid() && (info.st_mode & 0777) == 0700)
        setenv("XDG_RUNTIME_DIR", dir.c_str(), 1);
}

// With no session bus, Qt's accessibility bridge asks libdbus for one when
// the application ends, and libdbus forks dbus-launch to find it: a tenth
// of a second and a copy of the page tables of a process that may hold
// gigabytes. A display of our own never has a session bus.
void refuseSessionBus()
{
    if (!envSet("DBUS_SESSION_BUS_ADDRESS"))
        setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
}

} // namespace

bool HeadlessDisplay::canConnect(const char* display)
{
    // libxcb is what Qt's xcb platform uses; loading it by name keeps its
    // headers out of the build.
    void* xcb = dlopen("libxcb.so.1", RTLD_LAZY | RTLD_LOCAL);
    if (!xcb)
        return false;
    using Connect = void* (*)(const char*, int*);
    using HasError = int (*)(void*);
    using Disconnect = void (*)(void*);
    auto connect = reinterpret_cast<Connect>(dlsym(xcb, "xcb_connect"));
    auto hasError = reinterpret_cast<HasError>(dlsym(xcb, "xcb_connection_has_error"));
    auto disconnect = reinterpret_cast<Disconnect>(dlsym(xcb, "xcb_disconnect"));
    bool ok = false;
    if (connect && hasError && disconnect) {
        void* connection = connect(display, nullptr);
        ok = connection && hasError(connection) == 0;
        if (connection)
            disconnect(connection);
    }
    dlclose(xcb);
    return ok;
}

std::unique_ptr<HeadlessDisplay> HeadlessDisplay::ensure()
{
    ensureShaderCacheDir();
    ensureRuntimeDir();
    std::unique_ptr<HeadlessDisplay> display(new HeadlessDisplay);
    if (envSet("QT_QPA_PLATFORM") || envSet("WAYLAND_DISPLAY"))
        return display;
    if (envSet("DISPLAY") && canConnect(std::getenv("DISPLAY")))
        return display;
    unsetenv("DISPLAY");
    refuseSessionBus();
    if (!display->startXvfb())
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    return display;
}

bool HeadlessDisplay::startXvfb()
{
    const QString xvfb = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
    if (xvfb.isEmpty())
        return false;
    const std::string program = xvfb.toStdString();

    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0)
        return false;
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid < 0) {
        close(fds[0]);
        close(fds[1]);
        return false;
    }
    if (pid == 0) {
        // The server must never outlive the baker, whatever way it ends.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent)
            _exit(1);
        setsid();
        int null = open("/dev/null", O_RDWR);
        if (null >= 0) {
            dup2(null, STDIN_FILENO);
            dup2(null, STDOUT_FILENO);
            dup2(null, STDERR_FILENO);
        }
        fcntl(fds[1], F_SETFD, 0); // the write end must survive exec
        const std::string fd = std::to_string(fds[1]);
        execl(program.c_str(), program.c_str(), "-displayfd", fd.c_str(), "-nolisten", "tcp",
              "-screen", "0", "640x480x24", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(fds[1]);

    // Xvfb writes the display number and a line end once it accepts clients.
    std::string number;
    for (;;) {
        pollfd p{fds[0], POLLIN, 0};
        if (poll(&p, 1, 15000) <= 0)
            break;
        char c;
        if (read(fds[0], &c, 1) != 1 || c == '\n')
            break;
        number += c;
    }
    close(fds[0]);
    m_pid = pid;
    if (number.empty()) {
        stop();
        return false;
    }
    const std::string name = ":" + number;
    setenv("DISPLAY", name.c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    return true;
}

HeadlessDisplay::~HeadlessDisplay()
{
    stop();
}

void HeadlessDisplay::stop()
{
    if (m_pid <= 0)
        return;
    const pid_t pid = m_pid;
    m_pid = -1;
    kill(pid, SIGTERM);
    int status = 0;
    for (int i = 0; i < 200; ++i) {
        if (waitpid(pid, &status, WNOHANG) != 0)
            return;
        usleep(10000);
    }
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
}

} // namespace Ond::OpenGLUtils
