// SPDX-License-Identifier: MIT
#include "ui/model/date_text.h"

#include <QCoreApplication>
#include <QLocale>
#include <QRegularExpression>
#include <algorithm>

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

QString timeText(const QTime& time) {
    const QLocale locale;
    QString format = locale.timeFormat(QLocale::ShortFormat);
    if (!format.contains(QLatin1String("ss"))) {
        static const QRegularExpression plain(QStringLiteral("([hH]+)([:.])(m+)"));
        if (plain.match(format).hasMatch()) {
            format.replace(plain, QStringLiteral("\\1\\2\\3\\2ss"));
        } else {  // words between the numbers: use the long form, without its time zone
            static const QRegularExpression zone(QStringLiteral("[,\\s]*[(\\[]?t[)\\]]?\\s*"));
            format = locale.timeFormat(QLocale::LongFormat).remove(zone);
        }
    }
    // Qt 6.4 does not support CLDR's code for periods of the day, which the format for Taiwan contains.
    format.replace(QLatin1Char('B'), QLatin1String("AP"));
    return locale.toString(time, format);
}

QString dateAndTime(const QDateTime& date) {
    // Qt has no medium format: remove the weekday and its separators from the long one.
    static const QRegularExpression weekdayFirst(QStringLiteral("^dddd(?:'[^']*'|[^dMy'])*"));
    static const QRegularExpression weekdayLast(QStringLiteral("(?:[\\s,،-]|'de')*dddd.*$"));
    const QLocale locale;
    QString day = locale.dateFormat(QLocale::LongFormat);
    day.remove(weekdayFirst).remove(weekdayLast);
    day.replace(QLatin1String("MMMM"), QLatin1String("MMM"));
    return Texts::tr("%1, %2", "date, time of day")
        .arg(locale.toString(date.date(), day), timeText(date.time()));
}

QString isolated(const QString& text) {
    const bool rightToLeft = std::any_of(text.begin(), text.end(), [](QChar c) {
        return c.direction() == QChar::DirR || c.direction() == QChar::DirAL || c.direction() == QChar::DirAN;
    });
    constexpr char16_t firstStrongIsolate = 0x2068;
    constexpr char16_t popDirectionalIsolate = 0x2069;
    return rightToLeft ? QChar(firstStrongIsolate) + text + QChar(popDirectionalIsolate) : text;
}

}  // namespace sordin
