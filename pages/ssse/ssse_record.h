// The records of a social security card: a text of fields joined by "|", and how each is shown.
#pragma once

#include <QByteArray>
#include <QString>

/// The issuer's record as shown: seven lines "label: field", each ended by "\r\n". Fields are UTF-8 and shown as they
/// came, missing ones empty; fields after the seventh are left out. The text is cut, between two characters, at 1023
/// bytes of UTF-8.
QString issuerText(const QByteArray &record);

/// The holder's record likewise. The two name fields are GBK; sex and ethnic group are codes and shown as words.
QString holderText(const QByteArray &record);
