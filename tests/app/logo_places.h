#pragma once

#include "support/temporary_home.h"

#include <QColor>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <filesystem>
#include <system_error>

using Qt::StringLiterals::operator""_s;

/// Folders as on a user's disk: one with a bundle that contains the program, and one to start it from.
class LogoPlaces
{
public:
    explicit LogoPlaces(const QString& bundleName = u"Bundle"_s) : bundle(folder.filePath(bundleName))
    {
        QDir().mkpath(bundle + u"/MacOS"_s);
        QDir().mkpath(workingFolder());
        std::error_code error;
        const std::filesystem::path own = QCoreApplication::applicationFilePath().toStdU16String();
        const std::filesystem::path copy = program().toStdU16String();
        std::filesystem::create_hard_link(own, copy, error);
        if (error) {
            std::filesystem::copy_file(own, copy);
        }
    }

    QString workingFolder() const { return folder.filePath(u"start/here"_s); }
    QString program() const { return bundle + u"/MacOS/prog"_s; }
    /// The four places in order of precedence.
    QString candidate(int number) const
    {
        const QStringList files{bundle + u"/Resources"_s, bundle + u"/MacOS"_s, workingFolder() + u"/tarnwick/static"_s,
                                workingFolder() + u"/client/build/Tarnwick.app/Contents/Resources"_s};
        return files.at(number - 1) + u"/tarnwick-logo.png"_s;
    }
    QString path(const QString& name) const { return folder.filePath(name); }

    static bool paint(const QString& file, const QColor& colour, QSize size = {100, 100}, const char* format = "PNG")
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(colour);
        return QDir().mkpath(QFileInfo(file).path()) && image.save(file, format);
    }

    QJsonObject run(const QString& startFolder = {}, const QByteArray& wish = "plain") const
    {
        const support::TemporaryHome home;
        QProcess process;
        process.setWorkingDirectory(startFolder.isEmpty() ? workingFolder() : startFolder);
        process.start(program(), {u"logo-report"_s, QString::fromLatin1(wish)});
        if (!process.waitForFinished() || process.exitCode() != 0) {
            return {{u"failure"_s, process.errorString() + QString::fromUtf8(process.readAll())}};
        }
        return QJsonDocument::fromJson(process.readAllStandardOutput()).object();
    }

private:
    QTemporaryDir folder;
    QString bundle;
};
