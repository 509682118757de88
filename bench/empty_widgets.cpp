// The least a Qt Widgets program can be: what the real one's start and memory are compared with.

#include <QApplication>
#include <QWidget>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setStyle("Fusion");
  QWidget window;
  window.resize(804, 467);
  window.show();
  return QApplication::exec();
}
