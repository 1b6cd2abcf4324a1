// The limit that no program of the toolkit can beat: a window of the client's size that is empty or has one line of
// text, for which the fonts have to be looked up.
//
//   empty_window [TEXT]

#include <QApplication>
#include <QLabel>
#include <QMainWindow>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QMainWindow window;
    if (argc > 1) {
        window.setCentralWidget(new QLabel(QString::fromLocal8Bit(argv[1])));
    }
    window.resize(1220, 860);
    window.show();
    return QApplication::exec();
}
