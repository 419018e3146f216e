#include "keyboard/dv_text_field.h"

#include <gtest/gtest.h>

namespace drevix::test {
namespace {

TEST(DvTextField, Marks_AreReplacedInTheTemplate) {
    static const struct {
        const char *title;
        std::optional<QString> text;
        const char *shown;
    } kRows[] = {
        {"Version: ##", QStringLiteral("1.2"), "Version: 1.2"},
        {"Version: ##", std::nullopt, "Version: -"},
        {"##/##", QStringLiteral("a##b"), "a##b/a##b"},
    };
    for (const auto &row : kRows) {
        DvTextField field;
        field.setText(QLatin1String(row.title));
        field.rememberTitle();
        for (const auto &first : {std::optional<QString>(QStringLiteral("##")), std::optional<QString>()}) {
            field.replaceMarkWith(first); // what was shown before is of no account
            field.replaceMarkWith(row.text);
            EXPECT_EQ(field.text().toStdString(), row.shown) << row.title;
        }
    }
}

TEST(DvTextField, TextOfADevice_IsNoMarkup) {
    DvTextField field;
    field.setText(QStringLiteral("Name: ##"));
    field.rememberTitle();
    field.replaceMarkWith(QStringLiteral("x"));
    const int oneLine = field.sizeHint().height();
    field.replaceMarkWith(QStringLiteral("<b>a</b><br><br><br>"));
    EXPECT_EQ(field.sizeHint().height(), oneLine);
}

} // namespace
} // namespace drevix::test
