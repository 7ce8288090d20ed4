#include "vastra/charts/chart_picture.h"

#include <QBuffer>
#include <QPainter>
#include <QSvgGenerator>

#include <algorithm>

#include "vastra/charts/chart_view.h"
#include "vastra/platform/save_file.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr double kFileScale = 2;  // pixels of a file for each of a screen without small pixels

QByteArray ChartPng(CChartView& view) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  ChartImage(view, std::max(kFileScale, view.devicePixelRatioF())).save(&buffer, "PNG");
  return bytes;
}

QByteArray ChartSvg(CChartView& view) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  QSvgGenerator generator;
  generator.setOutputDevice(&buffer);
  generator.setResolution(view.logicalDpiX());
  generator.setSize(view.size());
  generator.setViewBox(QRect(QPoint(), view.size()));
  generator.setTitle("Chart");
  QPainter painter(&generator);
  view.Render(painter, view.size(), view.palette());
  painter.end();
  return bytes;
}

}  // namespace

QImage ChartImage(CChartView& view, double scale) {
  QImage image((QSizeF(view.size()) * scale).toSize(), QImage::Format_RGB32);
  image.setDevicePixelRatio(scale);
  QPainter painter(&image);
  view.Render(painter, view.size(), view.palette());
  return image;
}

CString SaveChartPicture(CChartView& view, const CString& path) {
  const bool isSvg = path.Right(4).CompareNoCase(".svg") == 0;
  const QByteArray bytes = isSvg ? ChartSvg(view) : ChartPng(view);
  if (bytes.isEmpty()) return path + ": the picture cannot be made";
  try {
    SaveFile(path, [&](CFile& file) { file.Write(bytes.constData(), static_cast<UINT>(bytes.size())); });
  } catch (const CFileException& fault) {
    return path + ": " + fault.Text();
  }
  return {};
}

}  // namespace vastra
