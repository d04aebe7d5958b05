#include "ADDateValueViewer.h"

#include "viewers/formatters/ADDateFormatter.h"

ADDateValueViewer::ADDateValueViewer()
{
    setFormatter(std::make_shared<ADDateFormatter>());
}
