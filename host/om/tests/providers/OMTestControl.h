#ifndef OMTESTCONTROL_H
#define OMTESTCONTROL_H

#include <string>
#include <vector>

// What the test provider module records, reachable with dlsym so tests can
// see which provider calls the object manager made.
//   "create:<provider>", "initialize:<provider>", "terminate:<provider>",
//   "<operation>:<provider>:<class argument>[:<result class>]"
extern "C" {
void OMTest_reset();
void OMTest_events(std::vector<std::string>* out);
}

typedef void (*OMTestResetFunction)();
typedef void (*OMTestEventsFunction)(std::vector<std::string>*);

#endif
