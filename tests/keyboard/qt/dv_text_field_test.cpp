#include "keyboard/qt/dv_text_field.h"

#include <gtest/gtest.h>

namespace drevix::test {
namespace {

TEST(DvTextField, EveryMark_IsReplacedByPlainText) {
    DvTextField field;
    field.setText(QStringLiteral("## / ##"));
    field.rememberTitle();
    field.replaceMarkWith(QStringLiteral("a##b"));
    EXPECT_EQ(field.text().toStdString(), "a##b / a##b");
    const int oneLine = field.sizeHint().height();
    field.replaceMarkWith(QStringLiteral("<b>a</b><br><br>"));
    EXPECT_EQ(field.sizeHint().height(), oneLine) << "what a device says is no markup";
    field.replaceMarkWith(std::nullopt);
    EXPECT_EQ(field.text().toStdString(), "- / -");
}

} // namespace
} // namespace drevix::test
