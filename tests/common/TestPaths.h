#pragma once
// Where the tests find the binary, the sources, the build tree and the
// reference data that sits beside the checkout.

#include <QByteArray>
#include <QString>

namespace ZmfTest {

QString binaryPath();      // the zmfbaker executable under test
QString sourceDir();       // the checkout's root
QString buildDir();        // the build tree (plugins live under it)
QString testDataDir();     // ../shared/testdata beside the checkout
QString examplesDir();     // examples/ of the checkout

// A fresh empty directory under the system temp dir, removed at exit.
QString makeTempDir();

// Writes `content` to dir/name and returns the path; empty if it could not.
QString writeFile(const QString& dir, const QString& name, const QByteArray& content);
// The file's bytes; empty if it cannot be read.
QByteArray readFile(const QString& path);

} // namespace ZmfTest
