#include "app/tarnwick_client_window.h"

#include <QApplication>
#include <QCoreApplication>

int main(int argc, char* argv[])
{
    QCoreApplication::setOrganizationName(u"Tarnwick"_s);
    QCoreApplication::setApplicationName(u"Tarnwick"_s);

    QApplication application(argc, argv);
    TarnwickClientWindow window;
    window.show();
    return QApplication::exec();
}
