#include "rating/RatingLogging.h"

Q_LOGGING_CATEGORY(lcRating, "tessaro.rating", QtInfoMsg)
