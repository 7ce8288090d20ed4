#include "vastra/charts/chart_layout_file.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimeZone>

#include <algorithm>
#include <cmath>

#include "vastra/charts/chart_colour_rules.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kLayoutVersion = 1;
constexpr const char* kVersionKey = "chart";

// A value that is not what it has to be. place: of the value.
struct CLayoutFault {
  QString place, reason;
};

QString MomentField(CMoment moment) {
  return QDateTime::fromMSecsSinceEpoch(moment, QTimeZone::utc()).toString(Qt::ISODateWithMs);
}

CMoment MomentOfField(const QJsonObject& object, const char* key) {
  const QDateTime time = QDateTime::fromString(object[key].toString(), Qt::ISODateWithMs);
  if (!time.isValid()) throw CLayoutFault{key, "is not a time such as \"2026-03-01T11:00:00.000Z\""};
  return std::clamp(CMoment{time.toMSecsSinceEpoch()}, kFirstMoment, kEndMoment);
}

bool FlagOf(const QJsonObject& object, const char* key, const QString& place) {
  const QJsonValue value = object[key];
  if (!value.isUndefined() && !value.isBool()) throw CLayoutFault{place + key, "is neither true nor false"};
  return value.toBool();
}

double NumberOf(const QJsonObject& object, const char* key, const QString& place) {
  if (!object[key].isDouble()) throw CLayoutFault{place + key, "is not a number"};
  return object[key].toDouble();
}

int IdOf(const QJsonObject& object, const char* key, const QString& place) {
  const double number = NumberOf(object, key, place);
  if (number < 0 || number > 1e6 || number != std::floor(number))
    throw CLayoutFault{place + key, "is not a whole number from 0 to 1000000"};
  return static_cast<int>(number);
}

QJsonObject AxisFields(const CChartAxis& axis) {
  if (axis.isAutomatic) return {{"id", axis.id}};
  return {{"id", axis.id}, {"low", axis.range.low}, {"high", axis.range.high}};
}

CChartAxis ReadAxis(const QJsonObject& fields, const QString& place) {
  CChartAxis axis = {.id = IdOf(fields, "id", place)};
  axis.isAutomatic = !fields.contains("low") && !fields.contains("high");
  if (axis.id == 0) throw CLayoutFault{place + "id", "is 0"};
  if (axis.isAutomatic) return axis;
  axis.range = {NumberOf(fields, "low", place), NumberOf(fields, "high", place)};
  if (axis.range.low >= axis.range.high) throw CLayoutFault{place + "high", "is not above low"};
  axis.range = DrawableRange(axis.range);
  return axis;
}

QJsonObject CurveFields(const CChartCurve& curve) {
  QJsonObject fields = {{"variable", ToScreen(curve.variable)},
                        {"axis", curve.axis},
                        {"colour", kCurveColourTable[curve.colour % kCurveColours].name}};
  if (curve.isHidden) fields["hidden"] = true;
  return fields;
}

unsigned ColourField(const QJsonObject& fields, const QString& place) {
  const QString name = fields["colour"].toString(kCurveColourTable[0].name);
  const auto* found =
      std::ranges::find_if(kCurveColourTable, [&](const auto& row) { return name == row.name; });
  if (found == std::end(kCurveColourTable))
    throw CLayoutFault{place + "colour", "\"" + name + "\" is no colour of curves"};
  return static_cast<unsigned>(found - kCurveColourTable);
}

CChartCurve ReadCurve(const QJsonObject& fields, const QString& place, CChartLayout& layout) {
  CChartCurve curve;
  curve.variable = FromScreen(fields["variable"].toString());
  if (curve.variable.IsEmpty()) throw CLayoutFault{place + "variable", "is not a name"};
  if (FindCurve(layout, curve.variable) != kNoCurve)
    throw CLayoutFault{place + "variable", "\"" + ToScreen(curve.variable) + "\" has a curve already"};
  curve.axis = fields.contains("axis") ? IdOf(fields, "axis", place) : 0;
  if (curve.axis != 0 && !FindAxis(layout, curve.axis))
    throw CLayoutFault{place + "axis", QString("there is no axis %1").arg(curve.axis)};
  curve.colour = ColourField(fields, place);
  curve.isHidden = FlagOf(fields, "hidden", place);
  return curve;
}

// Calls read with each object of a list and its place, such as "axes[0].".
template <class TRead>
void ReadList(const QJsonObject& fields, const char* key, std::size_t most, const TRead& read) {
  const QJsonValue list = fields[key];
  if (!list.isUndefined() && !list.isArray()) throw CLayoutFault{key, "is not a list"};
  const QJsonArray items = list.toArray();
  if (static_cast<std::size_t>(items.size()) > most)
    throw CLayoutFault{key, QString("has more than %1 items").arg(most)};
  for (qsizetype i = 0; i < items.size(); ++i) {
    const QString place = QString("%1[%2]").arg(key).arg(i);
    if (!items[i].isObject()) throw CLayoutFault{place, "is not an object"};
    read(items[i].toObject(), place + ".");
  }
}

CChartLayout ReadAll(const QJsonObject& fields) {
  if (fields[kVersionKey].toInt() != kLayoutVersion)
    throw CLayoutFault{
        kVersionKey,
        QString("is not %1: this is no layout of a chart, or one of a later version").arg(kLayoutVersion)};
  CChartLayout layout;
  ReadList(fields, "axes", kMostAxes, [&](const QJsonObject& axis, const QString& place) {
    const CChartAxis read = ReadAxis(axis, place);
    if (FindAxis(layout, read.id))
      throw CLayoutFault{place + "id", QString("axis %1 is there already").arg(read.id)};
    layout.axes.push_back(read);
  });
  ReadList(fields, "curves", kMostCurves, [&](const QJsonObject& curve, const QString& place) {
    layout.curves.push_back(ReadCurve(curve, place, layout));
  });
  std::erase_if(layout.axes, [&](const CChartAxis& axis) {
    return std::ranges::find(layout.curves, axis.id, &CChartCurve::axis) == layout.curves.end();
  });
  if (fields.contains("from") || fields.contains("to")) {
    layout.range = {MomentOfField(fields, "from"), MomentOfField(fields, "to")};
    if (layout.range.from >= layout.range.to) throw CLayoutFault{"to", "is not after from"};
  }
  layout.isFollowing = FlagOf(fields, "follow", "");
  layout.isUtc = FlagOf(fields, "utc", "");
  return layout;
}

}  // namespace

QJsonObject LayoutFields(const CChartLayout& layout) {
  QJsonArray curves, axes;
  for (const CChartCurve& curve : layout.curves) curves.append(CurveFields(curve));
  for (const CChartAxis& axis : layout.axes) axes.append(AxisFields(axis));
  QJsonObject fields = {{kVersionKey, kLayoutVersion}, {"curves", curves}, {"axes", axes}};
  if (layout.range.from < layout.range.to) {
    fields["from"] = MomentField(layout.range.from);
    fields["to"] = MomentField(layout.range.to);
  }
  if (layout.isFollowing) fields["follow"] = true;
  if (layout.isUtc) fields["utc"] = true;
  return fields;
}

CString ReadLayoutFields(const QJsonObject& fields, CChartLayout& layout) {
  try {
    layout = ReadAll(fields);
    return {};
  } catch (const CLayoutFault& fault) {
    return FromScreen(fault.place + ": " + fault.reason);
  }
}

QByteArray LayoutText(const CChartLayout& layout) {
  return QJsonDocument(LayoutFields(layout)).toJson(QJsonDocument::Indented);
}

CString ReadLayoutText(const QByteArray& text, CChartLayout& layout) {
  QJsonParseError fault;
  const QJsonDocument document = QJsonDocument::fromJson(text, &fault);
  if (fault.error != QJsonParseError::NoError) {
    const qsizetype line = text.left(fault.offset).count('\n') + 1;
    return FromScreen(QString("line %1: %2").arg(line).arg(fault.errorString()));
  }
  if (!document.isObject()) return "is not an object of JSON";
  return ReadLayoutFields(document.object(), layout);
}

}  // namespace vastra
