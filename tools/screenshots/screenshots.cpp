// Takes the screenshots in docs/screenshots: the whole X screen, as a person sees it,
// with the window searched, connected and read back from virtual controllers.
// scripts/screenshots runs it on a virtual screen the size of a small laptop's.

#include "screenshot.h"
#include "support/bench.h"
#include "wall/wallplanner.h"

#include <QScrollArea>
#include <QSpinBox>
#include <cstdio>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr,
                     "usage: %s PREFIX [PLANNER.png]   (writes PREFIX.png, PREFIX-scrolled.png "
                     "and the wall planner with a 3 x 4 wall over three controllers)\n",
                     argv[0]);
        return 2;
    }
    const QString prefix = QString::fromLocal8Bit(argv[1]);
    Bench bench("127.24.0.1", 4);
    qputenv("ZEDA_HOSTS", "127.24.0.1-127.24.0.4");
    Form1& form = bench.form;
    form.move(0, 0);
    form.show();
    if (!QTest::qWaitForWindowExposed(&form))
        return 1;
    form.findChild<QPushButton*>(QStringLiteral("btn_sys_search"))->click();
    form.ui.btn_con->click();
    form.ui.opt_tv2->click();
    if (!shoot(prefix + QStringLiteral(".png")))
        return 1;
    // The far corner: the picture page's buttons, scrolled to where they can be reached.
    form.ui.opt_image->click();
    form.findChild<QScrollArea*>()->ensureWidgetVisible(form.ui.btn_img_rst[5]);
    if (!shoot(prefix + QStringLiteral("-scrolled.png")))
        return 1;
    if (argc < 3)
        return 0;
    // Twelve tiles take the outputs of the first three controllers.
    WallPlanner& planner = form.planner();
    planner.present();
    planner.setGeometry(260, 60, 1080, 640);
    planner.findChild<QSpinBox*>(QStringLiteral("planner_rows"))->setValue(3);
    planner.findChild<QSpinBox*>(QStringLiteral("planner_cols"))->setValue(4);
    planner.autoFill();
    if (!QTest::qWaitForWindowExposed(&planner))
        return 1;
    return shoot(QString::fromLocal8Bit(argv[2])) ? 0 : 1;
}
