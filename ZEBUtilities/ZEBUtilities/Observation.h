#pragma once

// The module Observation: observable values.

#include <Observation/AnyObjectiveCThrowingObservable.h>
#include <Observation/ObjectiveCObserverQueue.h>
#include <Observation/ObjectiveCTypeErasedObservable.h>
#include <Observation/Observable.h>
#include <Observation/ObservableCore.h>
#include <Observation/ObservableInput.h>
#include <Observation/ObservedValue.h>
#include <Observation/Observer.h>
#include <Observation/ObserverQueue.h>
