// The least that a program with a Qt dialog can be.
#include <QApplication>
#include <QDialog>

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    QDialog dialog;
    dialog.resize(640, 360);
    dialog.show();
    return QApplication::exec();
}
