// What a class's own meta-object lists.
#pragma once

#include <QMetaMethod>
#include <QMetaObject>
#include <QStringList>

/// The signatures of the methods that the class itself declares, in index order.
inline QStringList ownMethods(const QMetaObject &metaObject)
{
    QStringList signatures;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i)
        signatures << QString::fromLatin1(metaObject.method(i).methodSignature());
    return signatures;
}
