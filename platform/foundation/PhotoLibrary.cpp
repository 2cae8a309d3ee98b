#include "platform/foundation/PhotoLibrary.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QThread>

#include <filesystem>

namespace foundation {

namespace {

constexpr qint64 chunkSize = 1 << 20;

} // namespace

QString PhotoLibrary::albumDirectory() {
    const QString path = qEnvironmentVariable("TESSARO_VIDEOS_DIR");
    if (!path.isEmpty())
        return path;
    return QDir(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation))
        .filePath(QStringLiteral("Tessaro"));
}

namespace {

// Copies everything from in to out, then closes out; a partial copy is removed.
bool copyContents(QFile& in, QFile& out, QString* error) {
    bool ok = true;
    while (ok && !in.atEnd()) {
        const QByteArray buffer = in.read(chunkSize);
        if (buffer.isEmpty() && in.error() != QFileDevice::NoError) {
            ok = false;
            *error = qtTrId("library_clip_cannot_read").arg(in.fileName(), in.errorString());
        } else if (out.write(buffer) != buffer.size() || !out.flush()) {
            ok = false;
        }
    }
    out.close();
    if (ok && out.error() != QFileDevice::NoError)
        ok = false;
    if (!ok && error->isEmpty())
        *error = qtTrId("library_cannot_written").arg(out.fileName(), out.errorString());
    if (!ok)
        out.remove();
    return ok;
}

bool openClip(QFile& in, QString* error) {
    if (in.open(QIODevice::ReadOnly))
        return true;
    *error = qtTrId("library_clip_cannot_read_2").arg(in.fileName(), in.errorString());
    return false;
}

} // namespace

bool PhotoLibrary::copyFile(const QString& source, const QString& destination, QString* error) {
    QFile in(source);
    if (!openClip(in, error))
        return false;
    QFile out(destination);
    // NewOnly claims the name atomically (O_EXCL): an existing file is never replaced.
    if (!out.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        *error = qtTrId("library_cannot_written_2").arg(destination, out.errorString());
        return false;
    }
    return copyContents(in, out, error);
}

QString PhotoLibrary::copyIntoAlbum(const QString& path, QString* error) {
    QFile in(path);
    if (!QFileInfo(path).isFile()) {
        *error = qtTrId("library_clip_no_longer_there").arg(path);
        return {};
    }
    if (!openClip(in, error))
        return {};
    const QString album = albumDirectory();
    std::error_code failure;
    std::filesystem::create_directories(QFile::encodeName(album).toStdString(), failure);
    if (failure || !QFileInfo(album).isDir()) {
        *error = qtTrId("library_folder_cannot_created")
                     .arg(album, QString::fromLocal8Bit(failure.message()));
        return {};
    }
    const QString stamp =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH.mm.ss"));
    const QString suffix = QFileInfo(path).suffix();
    for (int attempt = 1; attempt < 1000; ++attempt) {
        QString name = QStringLiteral("Tessaro ") + stamp;
        if (attempt > 1)
            name += QStringLiteral(" (%1)").arg(attempt);
        if (!suffix.isEmpty())
            name += QLatin1Char('.') + suffix;
        QFile out(QDir(album).filePath(name));
        if (out.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return copyContents(in, out, error) ? out.fileName() : QString();
        if (!out.exists()) {
            *error = qtTrId("library_cannot_written_3").arg(out.fileName(), out.errorString());
            return {};
        }
    }
    *error = qtTrId("library_there_no_free_file").arg(album);
    return {};
}

void PhotoLibrary::saveVideoAtPath(const QString& path, Completion completion) {
    QThread* worker = QThread::create([path, completion = std::move(completion)] {
        QString error;
        const QString saved = copyIntoAlbum(path, &error);
        // Gone at the end of the process: nobody is left to tell.
        if (QCoreApplication* application = QCoreApplication::instance())
            QMetaObject::invokeMethod(
                application,
                [completion, saved, error] {
                    completion(saved, saved.isEmpty() ? error : QString());
                },
                Qt::QueuedConnection);
    });
    QObject::connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    worker->start();
}

} // namespace foundation
