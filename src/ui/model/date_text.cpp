// SPDX-License-Identifier: MIT
#include "ui/model/date_text.h"

#include <QCoreApplication>
#include <QLocale>

namespace sordin {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(DateText)
};

int monthsBetween(const QDate& date, const QDate& now) {
    int months = (now.year() - date.year()) * 12 + now.month() - date.month();
    while (months > 0 && date.addMonths(months) > now) {
        --months;
    }
    return months;
}

}  // namespace

QString relativeDate(const QDateTime& date, const QDateTime& now) {
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    constexpr qint64 week = 7 * day;
    const qint64 seconds = date.secsTo(now);
    const auto text = [](qint64 count, const QString& one, const QString& many) {
        return count == 1 ? one : many.arg(count);
    };
    if (seconds < 1) {
        return Texts::tr("now");
    }
    if (seconds < minute) {
        return text(seconds, Texts::tr("1 second ago"), Texts::tr("%1 seconds ago"));
    }
    if (seconds < hour) {
        return text(seconds / minute, Texts::tr("1 minute ago"), Texts::tr("%1 minutes ago"));
    }
    if (seconds < day) {
        return text(seconds / hour, Texts::tr("1 hour ago"), Texts::tr("%1 hours ago"));
    }
    if (seconds < week) {
        return text(seconds / day, Texts::tr("yesterday"), Texts::tr("%1 days ago"));
    }
    const int months = monthsBetween(date.date(), now.date());
    if (months < 1) {
        return text(seconds / week, Texts::tr("last week"), Texts::tr("%1 weeks ago"));
    }
    if (months < 12) {
        return text(months, Texts::tr("last month"), Texts::tr("%1 months ago"));
    }
    return text(months / 12, Texts::tr("last year"), Texts::tr("%1 years ago"));
}

QString dateAndTime(const QDateTime& date) {
    const QLocale locale;
    // The short time with seconds put in: the long one names the time zone too.
    QString time = locale.timeFormat(QLocale::ShortFormat);
    if (!time.contains(QLatin1String("ss"))) {
        time.replace(QLatin1String("mm"), QLatin1String("mm:ss"));
    }
    QString day = locale.dateFormat(QLocale::LongFormat);
    day.remove(QLatin1String("dddd, ")).remove(QLatin1String("dddd "));
    day.replace(QLatin1String("MMMM"), QLatin1String("MMM"));
    return Texts::tr("%1, %2", "date, time of day")
        .arg(locale.toString(date.date(), day.trimmed()), locale.toString(date.time(), time));
}

}  // namespace sordin
