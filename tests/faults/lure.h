#pragma once

#include <QFile>
#include <QPixmap>
#include <QString>
#include <QTemporaryDir>

#include <array>

#if defined(Q_OS_LINUX)
#include <sys/inotify.h>
#include <unistd.h>
#endif

namespace faults {

/// A picture on the disk that knows whether anybody has opened it. Where the system does not tell, nobody ever has.
class Lure
{
public:
#if defined(Q_OS_LINUX)
    static constexpr bool isSupported = true;
#else
    static constexpr bool isSupported = false;
#endif

    Lure()
    {
        QPixmap picture(4, 4);
        picture.fill(Qt::red);
        picture.save(path());
#if defined(Q_OS_LINUX)
        handle = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        ::inotify_add_watch(handle, QFile::encodeName(path()).constData(), IN_OPEN);
#endif
    }
    ~Lure()
    {
#if defined(Q_OS_LINUX)
        ::close(handle);
#endif
    }
    Q_DISABLE_COPY_MOVE(Lure)

    QString path() const
    {
        return folder.filePath(QStringLiteral("lure.png"));
    }
    /// Since it was last forgotten.
    bool wasOpened()
    {
#if defined(Q_OS_LINUX)
        std::array<char, 4096> events{};
        opened = ::read(handle, events.data(), events.size()) > 0 || opened;
#endif
        return opened;
    }
    void forget()
    {
        wasOpened();
        opened = false;
    }

private:
    QTemporaryDir folder;
    int handle = -1;
    bool opened = false;
};

} // namespace faults
