// Makes the compiler emit the protocol's metadata, which it does only for a protocol that something refers to.
#import "transport/mac/HalvoHelperXPCProtocol.h"

Protocol* halvoProtocolUnderTest();

Protocol* halvoProtocolUnderTest() { return @protocol(HalvoHelperProtocol); }
