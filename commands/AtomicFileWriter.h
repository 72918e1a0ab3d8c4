#pragma once
// Writes a file so that its name only ever shows a complete file: the bytes
// go to a hidden temporary file in the same folder, which replaces the final
// name by one rename once it is closed. A killed process leaves at most a
// stray temporary file, never a cut file under the final name, and an earlier
// file of that name stays as it was until the new one is whole.

#include <QFile>
#include <QString>

#include <functional>

namespace ProgramCommand {

class AtomicFileWriter
{
public:
    explicit AtomicFileWriter(const QString& finalPath);
    // Removes the temporary file unless commit() succeeded.
    ~AtomicFileWriter();

    AtomicFileWriter(const AtomicFileWriter&) = delete;
    AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

    // Creates the temporary file, open for writing. False if the folder is
    // missing or not writable.
    bool open(QIODevice::OpenMode extraMode = {});
    // The temporary file; writers may close it when they are done.
    QFile& device() { return m_file; }
    // Closes, syncs and renames over the final name. False (and nothing
    // changed under the final name) if any step fails.
    bool commit();
    // Drops what was written.
    void discard();

    const QString& finalPath() const { return m_finalPath; }
    QString temporaryPath() const { return m_file.fileName(); }

private:
    QString m_finalPath;
    QFile m_file;
    // Kept for the signal handler, which may not build strings.
    QByteArray m_encodedTemporaryPath;
    bool m_committed = false;
};

// Runs `write` on an open temporary file and commits if it returned true.
bool writeFileAtomically(const QString& finalPath, const std::function<bool(QFile&)>& write,
                         QIODevice::OpenMode extraMode = {});

// True for the names of the temporary files above, so that tools listing a
// folder can skip them.
bool isAtomicTemporaryName(const QString& fileName);

} // namespace ProgramCommand
