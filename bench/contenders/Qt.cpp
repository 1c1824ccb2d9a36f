// SPDX-License-Identifier: MIT

// Qt 6: a tree of QObject with properties, and its streaming reader and writer of XML.

#include "../Text.h"
#include "../TreeTasks.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QUuid>
#include <QVariant>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace bench {

/// The node as an object; its name is that of the object, its children are child objects. A setter tells only
/// of what changes.
class QtItem : public QObject {
    Q_OBJECT
    Q_PROPERTY(int count MEMBER count NOTIFY changed)
    Q_PROPERTY(double length MEMBER length NOTIFY changed)
    Q_PROPERTY(QString label MEMBER label NOTIFY changed)
    Q_PROPERTY(bool isOpen MEMBER isOpen NOTIFY changed)
    Q_PROPERTY(QList<double> position MEMBER position NOTIFY changed)
    Q_PROPERTY(QUuid id MEMBER id NOTIFY changed)
    Q_PROPERTY(QList<double> samples MEMBER samples NOTIFY changed)
    Q_PROPERTY(QMap<QString, QString> tags MEMBER tags NOTIFY changed)

public:
    explicit QtItem(QObject* parent = nullptr) : QObject(parent) {}

    int count = 0;
    double length = 0;
    QString label;
    bool isOpen = false;
    QList<double> position;
    QUuid id;
    QList<double> samples;
    QMap<QString, QString> tags;

Q_SIGNALS:
    void changed();
};

namespace {

QString textOf(std::string const& text) {
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}
std::string textOf(QString const& text) { return text.toStdString(); }

QString listText(QList<double> const& numbers) { return textOf(numbersText(numbers)); }
QList<double> listOf(QStringView text) {
    QByteArray const bytes = text.toLatin1();
    QList<double> list;
    parseNumbers({bytes.data(), static_cast<std::size_t>(bytes.size())},
                 [&](double value) { list.append(value); });
    return list;
}

struct QtTree {
    static constexpr char name[] = "Qt 6";
    using Tree = std::unique_ptr<QtItem>;

    static Tree build(Node const& plan) {
        auto item = std::make_unique<QtItem>();
        fill(*item, plan);
        return item;
    }
    static Node plain(Tree const& tree) { return nodeOf(*tree); }

    static QByteArray write(Tree const& tree) {
        QByteArray bytes;
        QXmlStreamWriter out(&bytes);
        writeItem(out, *tree);
        return bytes;
    }
    static std::string_view view(QByteArray const& document) {
        return {document.data(), static_cast<std::size_t>(document.size())};
    }
    static Tree read(std::string_view text) {
        QXmlStreamReader in(QByteArray::fromRawData(text.data(), static_cast<int>(text.size())));
        auto root = std::make_unique<QtItem>();
        if (!in.readNextStartElement())
            throw std::runtime_error("Qt cannot read the document");
        readItem(in, *root);
        return root;
    }

    static QtItem const* find(Tree const& tree, std::string const& path) {
        QObject const* item = tree.get();
        for (auto const& step : textOf(path).split('/'))
            item = item->findChild<QObject*>(step, Qt::FindDirectChildrenOnly);
        return static_cast<QtItem const*>(item);
    }
    static int number(QtItem const* item, std::string const& attribute) {
        return item->property(attribute.c_str()).toInt();
    }

private:
    static void fill(QtItem& item, Node const& node) {
        item.setObjectName(textOf(node.name));
        item.count = node.count;
        item.length = node.length;
        item.label = textOf(node.label);
        item.isOpen = node.isOpen;
        item.position = QList<double>(node.position.begin(), node.position.end());
        item.id = QUuid::fromRfc4122({reinterpret_cast<char const*>(node.id.data()), 16});
        item.samples = QList<double>(node.samples.begin(), node.samples.end());
        for (auto const& [key, value] : node.tags)
            item.tags.insert(textOf(key), textOf(value));
        for (Node const& child : node.children)
            fill(*new QtItem(&item), child);
    }

    static Node nodeOf(QtItem const& item) {
        Node node{textOf(item.objectName()),
                  item.count,
                  item.length,
                  textOf(item.label),
                  item.isOpen,
                  {},
                  {},
                  {item.samples.begin(), item.samples.end()},
                  {},
                  {}};
        std::copy_n(item.position.begin(), node.position.size(), node.position.begin());
        QByteArray const id = item.id.toRfc4122();
        std::copy_n(id.begin(), node.id.size(), node.id.begin());
        for (auto const& [key, value] : item.tags.toStdMap())
            node.tags.emplace(textOf(key), textOf(value));
        for (QObject const* child : item.children())
            node.children.push_back(nodeOf(*static_cast<QtItem const*>(child)));
        return node;
    }

    static void writeItem(QXmlStreamWriter& out, QtItem const& item) {
        out.writeStartElement("item");
        out.writeAttribute("name", item.objectName());
        out.writeAttribute("count", QString::number(item.count));
        out.writeAttribute("length", listText({item.length}));
        out.writeAttribute("label", item.label);
        out.writeAttribute("isOpen", item.isOpen ? "true" : "false");
        out.writeAttribute("position", listText(item.position));
        out.writeAttribute("id", item.id.toString(QUuid::WithoutBraces));
        out.writeAttribute("samples", listText(item.samples));
        for (auto tag = item.tags.begin(); tag != item.tags.end(); ++tag) {
            out.writeStartElement("tag");
            out.writeAttribute("key", tag.key());
            out.writeAttribute("value", tag.value());
            out.writeEndElement();
        }
        for (QObject const* child : item.children())
            writeItem(out, *static_cast<QtItem const*>(child));
        out.writeEndElement();
    }

    static void readItem(QXmlStreamReader& in, QtItem& item) {
        {
            QXmlStreamAttributes const attributes = in.attributes();
            item.setObjectName(attributes.value("name").toString());
            item.count = attributes.value("count").toInt();
            item.length = listOf(attributes.value("length")).value(0);
            item.label = attributes.value("label").toString();
            item.isOpen = attributes.value("isOpen") == QLatin1String("true");
            item.position = listOf(attributes.value("position"));
            item.id = QUuid::fromString(attributes.value("id"));
            item.samples = listOf(attributes.value("samples"));
        }
        while (in.readNextStartElement()) {
            if (in.name() == QLatin1String("tag")) {
                QXmlStreamAttributes const tag = in.attributes();
                item.tags.insert(tag.value("key").toString(), tag.value("value").toString());
                in.skipCurrentElement();
            } else {
                readItem(in, *new QtItem(&item));
            }
        }
    }
};

Registration const registration(TreeTasks<QtTree>::contender());

} // namespace

} // namespace bench

#include "Qt.moc"
