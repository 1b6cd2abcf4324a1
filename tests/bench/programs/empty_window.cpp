// The limit that no program of the toolkit can beat: a window of the client's size with nothing in it.

#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1220, 860);
    window.show();
    return QApplication::exec();
}
