#ifndef KY_EXPORT_H
#define KY_EXPORT_H

#include <QtGlobal>

/** Marks what a library offers; everything else is hidden. */
#ifndef KY_EXPORT
#define KY_EXPORT Q_DECL_EXPORT
#endif

#endif
