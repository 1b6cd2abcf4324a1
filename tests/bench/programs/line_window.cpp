// What the first text costs any program: the empty window with one line in it, for which the fonts are looked up.

#include <QApplication>
#include <QLabel>
#include <QMainWindow>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.setCentralWidget(new QLabel(QStringLiteral("Tarnwick Desktop Client")));
    window.resize(1220, 860);
    window.show();
    return QApplication::exec();
}
