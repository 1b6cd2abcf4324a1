// The minimum cost of a list of projects: the same reply over the same network library, parsed in the same way, put
// into a table without a style sheet at once.
//
//   bare_table ADDRESS

#include <QApplication>
#include <QColor>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTableWidget>
#include <QTableWidgetItem>
#include <QUrl>

#include <array>

using Qt::StringLiterals::operator""_s;
using Qt::StringLiterals::operator""_L1;

namespace {

constexpr std::array columns = {"display_name"_L1, "slug"_L1, "core_label"_L1, "status"_L1};
constexpr int statusColumn = 3;

void fill(QTableWidget& table, const QJsonArray& projects)
{
    table.setRowCount(static_cast<int>(projects.size()));
    for (int row = 0; const auto& element : projects) {
        const QJsonObject project = element.toObject();
        for (int column = 0; const auto key : columns) {
            auto* item = new QTableWidgetItem(project.value(key).toString());
            if (column == statusColumn) {
                item->setForeground(QColor(0x76, 0xff, 0xa6));
            }
            table.setItem(row, column, item);
            ++column;
        }
        ++row;
    }
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QTableWidget table(0, static_cast<int>(columns.size()));
    table.resize(1220, 860);
    table.show();

    QNetworkAccessManager network;
    QNetworkReply* reply = network.get(QNetworkRequest(QUrl(QApplication::arguments().value(1))));
    QObject::connect(reply, &QNetworkReply::finished, &table, [reply, &table] {
        fill(table, QJsonDocument::fromJson(reply->readAll()).object().value("instances"_L1).toArray());
        reply->deleteLater();
    });
    return QApplication::exec();
}
