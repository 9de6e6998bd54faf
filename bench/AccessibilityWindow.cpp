// A window of N elements, a third of them buttons and the rest labels in boxes, for the accessibility
// benchmark: one argument, N.
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>

#include <cstdlib>

int main(int argc, char** argv) {
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    const QApplication application(argc, argv);
    const int wanted = argc > 1 ? std::atoi(argv[1]) : 50;
    QWidget window;
    window.setWindowTitle("Window");
    QVBoxLayout layout(&window);
    // Application and window are elements, too.
    for (int count = 2; count < wanted;) {
        auto* const box = new QWidget(&window); // NOLINT(cppcoreguidelines-owning-memory): the window's
        auto* const inside = new QVBoxLayout(box);
        layout.addWidget(box);
        ++count;
        for (int i = 0; i < 6 && count < wanted; ++i, ++count)
            if (i % 3 == 0)
                inside->addWidget(new QPushButton("Button " + QString::number(count), box));
            else
                inside->addWidget(new QLabel("Label " + QString::number(count), box));
    }
    window.show();
    return QApplication::exec();
}
