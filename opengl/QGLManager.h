#pragma once
// The one OpenGL context of the process, and the way to run code inside it.
// Construction never throws and prints nothing: a failure is kept as state,
// and every later run-in-context returns at once.

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <utility>

class QThread;

namespace Ond::OglUtils {
class OglContextData;
}

namespace Ond::OpenGLUtils {

class OffscreenContext;

class QGLManager : public QObject
{
    Q_OBJECT
public:
    using ContextFunction = std::function<int(Ond::OglUtils::OglContextData&)>;

    explicit QGLManager(QObject* parent = nullptr);
    ~QGLManager() override;

    // Runs `function` with this thread's context current; binds the record's
    // frame buffer first unless `noFramebuffer`. Returns the failure flag
    // (true as 1) without calling anything when the manager failed.
    int runInContext(bool noFramebuffer, const ContextFunction& function);

    // This thread's context and GL state; both null when the manager failed
    // or the thread has no context.
    std::pair<OffscreenContext*, Ond::OglUtils::OglContextData*> contextData() const;

    // Runs `function` in a compatibility-profile context made beside this
    // thread's core context on first use, sharing its objects: the
    // fixed-function calls that the core profile refuses work there. The
    // core context is current again afterwards. Returns 1 without calling
    // when the manager failed or no such context can be made here.
    int runInCompatibilityContext(const std::function<int()>& function);

    // Gives `thread` a context of its own, shared with the main one.
    void addWorkerThread(QThread* thread, bool share = true);

    bool hasFailed() const;
    QString errorText() const;

    // The manager of the process, or null before one is made.
    static QGLManager* instance();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace Ond::OpenGLUtils
