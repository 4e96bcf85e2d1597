#pragma once

// The module Text: what people write, in every script.
