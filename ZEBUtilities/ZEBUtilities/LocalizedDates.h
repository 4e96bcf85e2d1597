#pragma once

// The module LocalizedDates: dates in the words of the user.
