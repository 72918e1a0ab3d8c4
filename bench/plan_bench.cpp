// Four detail bakers on one high mesh of about 1 M triangles: as one plan
// (`run`) against four separate commands of the real binary. The plan loads
// the meshes and builds the ray-tracing scene once.
//
//   plan_bench [output-size exponents, default 8,9] [grid, default 760] [AO rays, default 64]
//
// The plan saves the loads and the scene builds; how much that weighs
// depends on how long the rays take, hence two map sizes by default.

#include "bench/BenchUtil.h"
#include "bench/TerrainScene.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace {

using ZmfBench::now;

struct Run
{
    double seconds = 0.0;
    double initSeconds = 0.0; // the bakers' own "Init" figures, added up
    int files = 0;
    int exitCode = 0;
};

void addRun(Run& total, const QString& program, const QStringList& args)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    const double t0 = now();
    process.start(program, QStringList{QStringLiteral("-v")} + args);
    if (!process.waitForStarted(-1)) {
        std::printf("could not start %s\n", qPrintable(program));
        total.exitCode = 1;
        return;
    }
    process.waitForFinished(-1);
    total.seconds += now() - t0;
    total.exitCode |= process.exitCode();
    const QString output = QString::fromLocal8Bit(process.readAll());
    if (process.exitCode() != 0)
        std::printf("%s", qPrintable(output));
    static const QRegularExpression init(QStringLiteral("Init: ([0-9.e+-]+)s"));
    for (const QString& line : output.split('\n')) {
        const QRegularExpressionMatch m = init.match(line);
        if (m.hasMatch()) {
            total.initSeconds += m.captured(1).toDouble();
            std::printf("    %s\n", qPrintable(line.mid(line.indexOf(QStringLiteral("Baker: "))).trimmed()));
        }
        if (line.contains(QStringLiteral("Writing file '/")))
            ++total.files;
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    const QStringList exponents = QString::fromLocal8Bit(argc > 1 ? argv[1] : "8,9").split(QLatin1Char(','));
    const unsigned grid = argc > 2 ? unsigned(std::atoi(argv[2])) : 760;
    const int rays = argc > 3 ? std::atoi(argv[3]) : 64;

    QTemporaryDir dir;
    QString low, high;
    if (!ZmfBench::writeTerrainPair(dir, grid, low, high))
        return 1;
    const QString program = ZmfBench::programPath();

    struct Baker
    {
        const char* command;
        QStringList options;
    };
    const QString rayCount = QString::number(rays);
    const Baker bakers[] = {
        {"normal-from-mesh", {}},
        {"ambient-occlusion-from-mesh", {QStringLiteral("nb-second-rays"), rayCount}},
        {"thickness-from-mesh", {}},
        {"bent-normal-from-mesh", {}},
    };
    const QStringList shared{QStringLiteral("relative-to-bbox"), QStringLiteral("false"),
                             QStringLiteral("max-frontal"), QStringLiteral("0.1"),
                             QStringLiteral("max-rear"), QStringLiteral("0.1")};

    for (const QString& exponentText : exponents) {
        const int exponent = exponentText.toInt();
        const QString size = QString::number(exponent);
        std::printf("four commands:\n");
        Run separate;
        for (const Baker& baker : bakers) {
            QStringList args{QString::fromLatin1(baker.command), low, QStringLiteral("--highdef-mesh"), high,
                             QStringLiteral("--output-size"), size + ',' + size, QStringLiteral("--output-path"),
                             dir.path()};
            for (int i = 0; i < shared.size(); i += 2)
                args << QStringLiteral("--") + shared[i] << shared[i + 1];
            for (int i = 0; i < baker.options.size(); i += 2)
                args << QStringLiteral("--") + baker.options[i] << baker.options[i + 1];
            addRun(separate, program, args);
        }

        QString nodes;
        for (const Baker& baker : bakers) {
            // Baker options belong to the nodes; the root takes only shared settings.
            QString parameters;
            const QStringList options = shared + baker.options;
            for (int i = 0; i < options.size(); i += 2)
                parameters += QStringLiteral(", \"%1\": %2").arg(options[i], options[i + 1]);
            nodes += QStringLiteral(", \"%1\": {\"baker\": \"%1\", \"parameters\": {\"output-name\": \"plan_%1\"%2}}")
                         .arg(QString::fromLatin1(baker.command), parameters);
        }
        const QString planText =
            QStringLiteral("{\"inputs\": [\"%1\"], \"highdef-mesh\": \"%2\", \"output-path\": \"%3\", "
                           "\"output-size\": {\"width\": %4, \"height\": %4}%5}")
                .arg(low, high, dir.path(), size, nodes);
        const QString planPath = dir.filePath(QStringLiteral("plan.json"));
        QFile planFile(planPath);
        if (!planFile.open(QIODevice::WriteOnly) || planFile.write(planText.toUtf8()) < 0) {
            std::printf("could not write the plan to %s\n", qPrintable(planPath));
            return 1;
        }
        planFile.close();
        std::printf("one plan:\n");
        Run plan;
        addRun(plan, program, {QStringLiteral("run"), planPath});

        std::printf("high mesh: %u triangles, maps %d x %d, AO %d rays; normal, AO, thickness, bent normals\n",
                    2u * (grid - 1) * (grid - 1), 1 << exponent, 1 << exponent, rays);
        std::printf("four commands: %8.3f s wall, bakers' init %7.3f s, %d files, exit %d\n", separate.seconds,
                    separate.initSeconds, separate.files, separate.exitCode);
        std::printf("one plan:      %8.3f s wall, bakers' init %7.3f s, %d files, exit %d\n", plan.seconds,
                    plan.initSeconds, plan.files, plan.exitCode);
        std::printf("commands / plan: %.2f\n", plan.seconds > 0.0 ? separate.seconds / plan.seconds : 0.0);
        std::printf("\n");
    }
    return 0;
}
